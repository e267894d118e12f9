#pragma once

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "VorselKelp/Result.h"

namespace brellixctl {

/// A whole file; an error says why it can't be read.
inline VorselKelp::Result<std::string> readTextFile(const std::string& path) {
  const std::ifstream file(path, std::ios::binary);
  if (!file) return VorselKelp::Error{"Cannot read " + path + ": " + std::strerror(errno)};
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace brellixctl
