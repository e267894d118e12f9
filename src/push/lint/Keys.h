#pragma once

#include <boost/json.hpp>

#include "push/lint/Links.h"

namespace VorselKelp {

/// Keys that nothing reads, and that stand where one is read that is spelled nearly so.
void warnOfUnknownKeys(LintLines& warnings, const boost::json::object& root);

}  // namespace VorselKelp
