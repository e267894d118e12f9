#pragma once

#include <string>

#include "push/PushTables.h"
#include "push/lint/Links.h"

namespace VorselKelp {

// What is most likely not meant so about the texts, the sound and the buttons of a payload. `where` is the
// path of what is looked at.

/// `shown` is what `sent` becomes.
void warnOfTitle(LintLines& warnings, const std::string& where, const std::string& sent,
                 const std::string& shown);
/// A text that is shown as it is sent.
void warnOfPlainText(LintLines& warnings, const std::string& where, const std::string& sent);
void warnOfSound(LintLines& warnings, const std::string& where, const std::string& name);
void warnOfButtons(LintLines& warnings, const std::string& where, const std::vector<Action>& actions);

}  // namespace VorselKelp
