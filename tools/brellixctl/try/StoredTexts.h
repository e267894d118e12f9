#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/PayloadLint.h"

namespace brellixctl {

/// Texts of a store by their key and, behind a space, their entry.
using StoredTexts = std::map<std::string, std::vector<std::string>>;

[[nodiscard]] StoredTexts foretoldTexts(const std::vector<VorselKelp::PayloadLint::Stored>& stored);
/// All texts under keys whose values have changed, but for the count on the icon, of which nothing is
/// foretold.
[[nodiscard]] StoredTexts changedTexts(const VorselKelp::JSONAny& before, const VorselKelp::JSONAny& after);

[[nodiscard]] std::set<std::string> namesOf(const StoredTexts& texts);
/// Empty where there are none.
[[nodiscard]] std::vector<std::string> textsOf(const StoredTexts& texts, const std::string& name);

}  // namespace brellixctl
