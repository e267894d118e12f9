#pragma once

#include <string>

#include "VorselKelp/JSONAny.h"

namespace VorselKelp {

/// The text of what a page posted: a text is itself, everything else is described, objects in a form that is
/// no JSON. The description is cut off after `limit` bytes, or little more.
[[nodiscard]] std::string messageText(const JSONAny& body, std::size_t limit);

}  // namespace VorselKelp
