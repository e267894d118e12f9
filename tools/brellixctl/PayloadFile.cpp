#include "brellixctl/PayloadFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "VorselKelp/JSONText.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::Result;

namespace {

constexpr std::size_t payloadLimit = std::size_t{64} << 20;

}  // namespace

Result<std::string> readPayload(const std::string& path) {
  std::FILE* opened = path == "-" ? stdin : std::fopen(path.c_str(), "rbe");
  if (opened == nullptr) return Error{"Cannot read " + path + ": " + std::strerror(errno)};
  const auto close = [](std::FILE* file) { return file == stdin ? 0 : std::fclose(file); };
  const std::unique_ptr<std::FILE, decltype(close)> file(opened, close);
  std::string bytes;
  std::string block(std::size_t{1} << 16, '\0');
  while (const auto got = std::fread(block.data(), 1, block.size(), file.get())) {
    bytes.append(block, 0, got);
    if (bytes.size() > payloadLimit)
      return Error{path + " is larger than 64 MiB; no server sends such a payload"};
  }
  if (std::ferror(file.get()) != 0) return Error{"Cannot read " + path + ": " + std::strerror(errno)};
  return bytes;
}

Result<JSONAny> decodePayload(const std::string& bytes, const std::string& path) {
  auto json = VorselKelp::readJSONText(bytes);
  if (!json) return Error{path + " is no JSON: " + json.error().description};
  if (json->as<JSONAny::Dictionary>() == nullptr)
    return Error{path + " is no JSON object; a payload looks like {\"aps\": {\"alert\": ...}}"};
  return json;
}

}  // namespace brellixctl
