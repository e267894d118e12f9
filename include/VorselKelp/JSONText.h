#pragma once

#include <string_view>

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelp/Result.h"

namespace VorselKelp {

/// Reads what JSONAny::decode reads, for texts that people write. The error says in one line where the text
/// stops being JSON and what belongs there, such as
/// "line 3, column 14: expected "," or "}", found a text". Lines and columns count from 1, columns in
/// characters. Any thread.
VORSELKELP_API Result<JSONAny> readJSONText(std::string_view text);

}  // namespace VorselKelp
