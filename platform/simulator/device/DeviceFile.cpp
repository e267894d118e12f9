#include "device/DeviceFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "VorselKelpPosix/Descriptor.h"
#include "VorselKelpPosix/DescriptorWriter.h"
#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/Hex.h"
#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpPosix/LockFile.h"

namespace VorselKelp::simulator {
namespace {

using Contents = DeviceFile::Contents;
using Registration = DeviceFile::Registration;

constexpr std::size_t longestFile = std::size_t{1} << 20;
constexpr auto filePatience = std::chrono::milliseconds(10'000);

std::optional<double> numberIn(const JSONAny& value) {
  if (const auto* whole = value.as<std::int64_t>()) return static_cast<double>(*whole);
  const auto* number = value.as<double>();
  if (number == nullptr || !std::isfinite(*number)) return std::nullopt;
  return *number;
}

std::optional<int> digitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return std::nullopt;
}

std::optional<std::string> bytesOfHex(std::string_view hex) {
  std::string bytes;
  if (hex.empty() || hex.size() % 2 != 0) return std::nullopt;
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    const auto high = digitOf(hex[i]), low = digitOf(hex[i + 1]);
    if (!high || !low) return std::nullopt;
    bytes += static_cast<char>(*high * 16 + *low);
  }
  return bytes;
}

/// Absent when a member is no token with its time.
std::optional<std::map<std::string, double>> decodeGone(const JSONAny* json) {
  std::map<std::string, double> gone;
  if (json == nullptr) return gone;
  const auto* members = json->as<JSONAny::Dictionary>();
  if (members == nullptr) return std::nullopt;
  for (const auto& [hex, value] : *members) {
    auto token = bytesOfHex(hex);
    const auto time = numberIn(value);
    if (!token || !time) return std::nullopt;
    gone.insert_or_assign(*std::move(token), *time);
  }
  return gone;
}

std::optional<Registration> decodeRegistration(const JSONAny& json) {
  const auto* token = json.find("token");
  const auto* registered = json.find("registered");
  if (token == nullptr || registered == nullptr) return std::nullopt;
  const auto* hex = token->as<std::string>();
  const auto* flag = registered->as<bool>();
  if (hex == nullptr || flag == nullptr) return std::nullopt;
  auto gone = decodeGone(json.find("gone"));
  // Without a token once the application was uninstalled.
  auto bytes = hex->empty() && !*flag ? std::string() : bytesOfHex(*hex);
  if (!bytes || !gone) return std::nullopt;
  return Registration{*std::move(bytes), *flag, *std::move(gone)};
}

/// Absent when it is not what encodeContents() writes.
std::optional<Contents> decodeContents(std::string_view text) {
  const auto json = JSONAny::decode(text);
  if (!json) return std::nullopt;
  const auto* clock = json->find("clockOffset");
  const auto* registrations = json->find("registrations");
  if (clock == nullptr || registrations == nullptr) return std::nullopt;
  const auto offset = numberIn(*clock);
  const auto* members = registrations->as<JSONAny::Dictionary>();
  if (!offset || members == nullptr) return std::nullopt;
  Contents contents{*offset};
  if (const auto* off = json->find("off")) {
    const auto* flag = off->as<bool>();
    if (flag == nullptr) return std::nullopt;
    contents.off = *flag;
  }
  for (const auto& [application, value] : *members) {
    auto registration = decodeRegistration(value);
    if (!registration) return std::nullopt;
    contents.registrations.insert_or_assign(application, *std::move(registration));
  }
  return contents;
}

Result<std::string> encodeContents(const Contents& contents) {
  JSONAny::Dictionary registrations;
  for (const auto& [application, registration] : contents.registrations) {
    JSONAny::Dictionary gone;
    for (const auto& [token, time] : registration.gone) gone.push_back({posix::hexOf(token), time});
    registrations.push_back({application, JSONAny::Dictionary{{"token", posix::hexOf(registration.token)},
                                                              {"registered", registration.registered},
                                                              {"gone", std::move(gone)}}});
  }
  return JSONAny(JSONAny::Dictionary{{"clockOffset", contents.clockOffset},
                                     {"off", contents.off},
                                     {"registrations", std::move(registrations)}})
      .encode();
}

Error unusableFile(const std::string& reason, int code = 0) {
  return Error{"Cannot use the simulated device's file " + reason, code};
}

}  // namespace

Result<Contents> DeviceFile::read() const {
  const auto text = posix::readWholeFile(path_, longestFile);
  if (!text && text.error().code == ENOENT) return Contents();
  if (!text) return unusableFile(text.error().description, text.error().code);
  auto contents = decodeContents(*text);
  if (!contents) return unusableFile(path_ + ": it is damaged");
  return *std::move(contents);
}

Status DeviceFile::change(platform::FunctionRef<void(Contents&)> work) const {
  auto lock = posix::lockFile(path_ + ".lock", filePatience);
  if (!lock && lock.error().code == ENOENT && posix::makeFolders(posix::parentOf(path_)))
    lock = posix::lockFile(path_ + ".lock", filePatience);
  if (!lock) return unusableFile(lock.error().description, lock.error().code);
  auto contents = read();
  if (!contents) return contents.error();
  const auto before = *contents;
  work(*contents);
  return *contents == before ? Done{} : replace(*contents);
}

/// Under the lock: the passing name is one for all.
Status DeviceFile::replace(const Contents& contents) const {
  const auto text = encodeContents(contents);
  if (!text) return unusableFile(path_ + ": " + text.error().description);
  const auto fresh = path_ + ".new";
  posix::Descriptor file(::open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (file.number() >= 0 && posix::writeAll(file.number(), *text) && file.close() &&
      ::rename(fresh.c_str(), path_.c_str()) == 0) {
    return Done{};
  }
  const auto error = posix::systemError(path_);
  ::unlink(fresh.c_str());
  return unusableFile(error.description, error.code);
}

void DeviceFile::report(const Status& status) {
  if (status) return;
  {
    const std::lock_guard lock(mutex_);
    if (std::exchange(reported_, true)) return;
  }
  posix::standardErrorLines()(status.error().description);
}

}  // namespace VorselKelp::simulator
