#pragma once

#include <string>

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/Result.h"

namespace brellixctl {

// How a command ends: what it prints last, and its exit status.

/// Whether a script reads what the command prints. Before the command runs.
void answerInJSON(bool json);

/// Prints what the command came to: `json` for a script, or `words`, which are lines for a person. Where
/// `failure` is not empty it is an "error" of the JSON and a line on standard error.
int answer(VorselKelp::JSONAny::Dictionary json, const std::string& words, const std::string& failure);

/// Says in one line on standard error why there is nothing else to print; a script gets {"error": ...} as
/// well.
int fail(const VorselKelp::Error& error);
int fail(const std::string& reason);

}  // namespace brellixctl
