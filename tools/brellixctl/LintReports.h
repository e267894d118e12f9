#pragma once

#include <string>

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/PayloadLint.h"

namespace brellixctl {

// What is foretold of a payload, as JSON for a script and in words for a person: lines of plain text.

VorselKelp::JSONAny::Dictionary toJSON(const VorselKelp::PayloadLint& lint);
std::string inWords(const VorselKelp::PayloadLint& lint);

}  // namespace brellixctl
