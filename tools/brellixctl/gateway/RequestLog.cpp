#include "brellixctl/gateway/RequestLog.h"

#include <cerrno>
#include <chrono>
#include <cstring>

#include "VorselKelp/JSONAny.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::Result;

namespace {

constexpr double milli = 1000;

double secondsNow() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

}  // namespace

Result<std::shared_ptr<RequestLog>> RequestLog::open(const std::string& path) {
  auto* file = std::fopen(path.c_str(), "ae");
  if (!file) return Error{"Cannot write " + path + ": " + std::strerror(errno)};
  return std::make_shared<RequestLog>(file);
}

void RequestLog::write(const gateway::Record& record) {
  JSONAny::Dictionary line{{"time", secondsNow()},
                           {"id", record.identifier},
                           {"device", record.device},
                           {"topic", record.topic},
                           {"bytes", static_cast<std::int64_t>(record.size)},
                           {"status", record.answer.status},
                           {"reason", std::string(record.answer.reason)},
                           {"milliseconds", record.seconds * milli}};
  const auto text = JSONAny(std::move(line)).encode();
  if (!text) return;
  std::fputs((*text + '\n').c_str(), file_.get());
  std::fflush(file_.get());
}

}  // namespace brellixctl
