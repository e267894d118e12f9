#pragma once

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/PayloadLint.h"
#include "push/AdministrativePush.h"
#include "push/lint/Links.h"

namespace VorselKelp {

/// Tells what the application gets of a silent push, and warns of what nobody reads of it.
void tellSilent(PayloadLint& lint, const JSONAny& payload, AdministrativePush lists);

/// Warns of a mark for silent pushes that is none.
void warnOfMark(LintLines& warnings, const JSONAny& payload);

}  // namespace VorselKelp
