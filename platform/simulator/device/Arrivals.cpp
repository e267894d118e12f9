#include "VorselKelpSimulator/Arrivals.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <vector>

#include "VorselKelp/JSONAny.h"
#include "VorselKelpPosix/Descriptor.h"
#include "VorselKelpPosix/DescriptorWriter.h"
#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpPosix/LockFile.h"
#include "VorselKelpPosix/Services.h"
#include "VorselKelpSimulator/DeviceHome.h"
#include "device/DeviceFile.h"

namespace VorselKelp::simulator {
namespace {

namespace fs = std::filesystem;

constexpr double longestKept = 30 * 86400.0;  // seconds
// What has come to a device that is on is not late because others are delivered before it.
constexpr double longestUnderWay = 600;  // seconds
constexpr std::size_t longestEntry = std::size_t{65} << 20;
constexpr auto patience = std::chrono::milliseconds(10'000);
constexpr std::string_view keptSuffix = ".kept";
constexpr const char* unfinished = ".new";

struct Entry {
  Arrival push;
  double expires = 0;  // seconds since 1970 on the device's clock
};

/// A line about the payload, and the payload as it came.
Result<std::string> encodeEntry(const Entry& entry) {
  auto line =
      JSONAny(JSONAny::Dictionary{{"id", entry.push.identifier}, {"expires", entry.expires}}).encode();
  if (!line) return line;
  return *std::move(line) + '\n' + entry.push.payload;
}

std::optional<Entry> decodeEntry(std::string_view text) {
  const auto end = text.find('\n');
  if (end == std::string_view::npos) return std::nullopt;
  const auto json = JSONAny::decode(text.substr(0, end));
  const auto* identifier = json ? json->find("id") : nullptr;
  const auto* expires = json ? json->find("expires") : nullptr;
  if (identifier == nullptr || expires == nullptr) return std::nullopt;
  const auto* name = identifier->as<std::string>();
  const auto* whole = expires->as<std::int64_t>();
  const auto* time = expires->as<double>();
  if (name == nullptr || (whole == nullptr && time == nullptr)) return std::nullopt;
  return Entry{{*name, std::string(text.substr(end + 1))}, whole ? static_cast<double>(*whole) : *time};
}

/// A name behind all others: that of the time. Under the device's lock, which no two changes hold within one
/// nanosecond.
std::string nextName() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  auto digits = std::to_string(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
  return std::string(20 - std::min<std::size_t>(digits.size(), 20), '0') + digits;
}

/// Oldest first; nothing where there is no folder.
std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    if (auto name = entry->path().filename().string(); !name.starts_with('.'))
      names.push_back(std::move(name));
  }
  std::ranges::sort(names);
  return names;
}

Status write(const std::string& path, const std::string& text) {
  const auto fresh = posix::parentOf(path) + '/' + unfinished;
  posix::Descriptor file(::open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (file.number() >= 0 && posix::writeAll(file.number(), text) && file.close() &&
      ::rename(fresh.c_str(), path.c_str()) == 0) {
    return Done{};
  }
  const auto error = posix::systemError(path);
  ::unlink(fresh.c_str());
  return Error{"The push is not kept. " + error.description, error.code};
}

/// Under the device's lock.
Result<Arrivals::Place> store(const std::string& folder, bool off, Entry entry, double now) {
  if (off && entry.expires <= now) return Arrivals::Place::dropped;
  if (!off) entry.expires = std::max(entry.expires, now + longestUnderWay);
  const auto text = encodeEntry(entry);
  if (!text) return text.error();
  if (const auto made = posix::makeFolders(folder); !made) return made.error();
  auto path = folder + '/' + nextName();
  if (off) {
    path += keptSuffix;
    // It takes the place of the one before in one step, so that never two of them are left.
    for (const auto& name : namesIn(folder)) {
      if (name.ends_with(keptSuffix)) ::rename((folder + '/' + name).c_str(), path.c_str());
    }
  }
  if (const auto written = write(path, *text); !written) return written.error();
  return off ? Arrivals::Place::kept : Arrivals::Place::underWay;
}

}  // namespace

Arrivals::Arrivals(const DeviceHome& home, const std::string& application)
    : folder_(home.arrivals(application)), file_(std::make_unique<DeviceFile>(home.deviceFile())) {}

Arrivals::~Arrivals() = default;

Result<Arrivals::Place> Arrivals::put(const Arrival& push, std::optional<std::int64_t> expiration) {
  Result<Place> place = Place::dropped;
  const auto status = file_->change([&](DeviceFile::Contents& contents) {
    const double now = posix::makeClock()->now() + contents.clockOffset;
    const double latest = now + longestKept;
    const double expires = expiration ? std::min(static_cast<double>(*expiration), latest) : latest;
    place = store(folder_, contents.off, {push, expires}, now);
  });
  if (!status) return status.error();
  return place;
}

Status Arrivals::deliver(platform::FunctionRef<Taken(const Arrival&)> take) {
  auto names = namesIn(folder_);
  if (names.empty()) return Done{};
  const auto lock = posix::lockFile(folder_ + ".lock", patience);
  // Whoever holds it so long has looked again since this one came.
  if (!lock && lock.error().code == EWOULDBLOCK) return Done{};
  if (!lock) return Error{"Cannot deliver what has come. " + lock.error().description, lock.error().code};
  for (names = namesIn(folder_); !names.empty(); names = namesIn(folder_)) {
    for (const auto& name : names) {
      const auto step = handOver(name, take);
      if (!step) return step.error();
      if (*step == Step::stopped) return Done{};
    }
  }
  return Done{};
}

Result<Arrivals::Step> Arrivals::handOver(const std::string& name,
                                          platform::FunctionRef<Taken(const Arrival&)> take) {
  const auto contents = file_->read();
  if (!contents) return contents.error();
  if (contents->off) return Step::stopped;
  const auto path = folder_ + '/' + name;
  const auto text = posix::readWholeFile(path, longestEntry);
  if (!text && text.error().code == ENOENT) return Step::handedOver;  // replaced, or the application has gone
  const auto entry = text ? decodeEntry(*text) : std::nullopt;
  if (!entry) {
    posix::standardErrorLines()("A push is lost, for its file can't be read: " + path);
  } else if (entry->expires > posix::makeClock()->now() + contents->clockOffset) {
    if (take(entry->push) == Taken::notYet) return Step::stopped;
  }
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) return posix::systemError(path);
  return Step::handedOver;
}

std::size_t Arrivals::count() const {
  return namesIn(folder_).size();
}

Status Arrivals::clear() {
  std::error_code error;
  fs::remove_all(folder_, error);
  if (error) return Error{folder_ + ": " + error.message(), error.value()};
  return Done{};
}

}  // namespace VorselKelp::simulator
