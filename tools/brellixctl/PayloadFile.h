#pragma once

#include <string>

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/Result.h"

namespace brellixctl {

/// The bytes of a payload file, at most 64 MiB; "-" is standard input. An error is one line.
VorselKelp::Result<std::string> readPayload(const std::string& path);

/// The bytes of the file `path` as the JSON object that a payload is. An error is one line.
VorselKelp::Result<VorselKelp::JSONAny> decodePayload(const std::string& bytes, const std::string& path);

}  // namespace brellixctl
