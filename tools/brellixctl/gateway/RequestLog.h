#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "VorselKelp/Result.h"
#include "gateway/Gateway.h"

namespace brellixctl {

/// A file with a JSON object a line for each request that a gateway has answered. Devices have names there
/// with which nobody can send to them. Any thread.
class RequestLog {
 public:
  /// Goes on with a file that is there.
  static VorselKelp::Result<std::shared_ptr<RequestLog>> open(const std::string& path);
  explicit RequestLog(std::FILE* file) : file_(file, &std::fclose) {}

  void write(const gateway::Record& record);

 private:
  // The stream has a lock of its own.
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
};

}  // namespace brellixctl
