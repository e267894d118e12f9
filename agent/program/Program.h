#pragma once

#include <string>

namespace VorselKelp::agent {

/// This program's file; of one that was replaced since it started, where its successor lies.
std::string programPath();

/// Whether another file lies there now.
bool programReplaced();

}  // namespace VorselKelp::agent
