#pragma once

#include <glib.h>

#include <string>

namespace VorselKelp::agent {

/// Whether a message may be a payload that nobody has encrypted. An encrypted one can begin with a brace too,
/// but is no text.
inline bool isInClear(const std::string& bytes) {
  return bytes.starts_with('{') &&
         g_utf8_validate(bytes.data(), static_cast<gssize>(bytes.size()), nullptr) != FALSE;
}

}  // namespace VorselKelp::agent
