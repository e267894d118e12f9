#include "VorselKelpSystem/HostDevice.h"

#include <sys/utsname.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/Locale.h"
#include "VorselKelpSystem/NotificationRecords.h"

namespace VorselKelp::system {
namespace {

constexpr std::size_t longestFile = std::size_t{64} << 10;
constexpr std::size_t longestFact = 128;  // bytes

std::string contentsOf(const std::string& path) {
  auto read = posix::readWholeFile(path, longestFile);
  return read ? *std::move(read) : std::string();
}

bool isControl(char c) {
  return static_cast<unsigned char>(c) < 32 || c == 127;
}

bool isAsciiAlphanumeric(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// The first line as valid text without control characters, and without space at both ends.
std::string tidied(std::string_view text) {
  text = text.substr(0, text.find_first_of(std::string_view("\n\0", 2)));
  const auto continues = [&](std::size_t at) {
    return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
  };
  if (text.size() > longestFact) {
    std::size_t end = longestFact;
    while (end > 0 && continues(end)) --end;
    text = text.substr(0, end);
  }
  std::string line = lossyText(text);
  std::ranges::replace_if(line, isControl, ' ');
  const auto first = line.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return line.substr(first, line.find_last_not_of(' ') + 1 - first);
}

/// A word as a shell reads it; absent when a quotation is not closed.
std::optional<std::string> unquoted(std::string_view text) {
  std::string word;
  char quote = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool escapes = c == '\\' && quote != '\'' && i + 1 < text.size();
    if (escapes && (quote == 0 || std::string_view("\"\\$`").find(text[i + 1]) != std::string_view::npos)) {
      word += text[++i];
    } else if (quote == 0 && (c == '"' || c == '\'')) {
      quote = c;
    } else if (quote != 0 && c == quote) {
      quote = 0;
    } else {
      word += c;
    }
  }
  if (quote != 0) return std::nullopt;
  return word;
}

struct Distribution {
  std::string name;
  std::string version;
};

/// By its os-release file: assignments as a shell reads them.
Distribution parsedDistribution(std::string_view text) {
  Distribution found;
  while (!text.empty()) {
    const auto line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    const auto equals = line.find('=');
    if (equals == std::string_view::npos) continue;
    const auto name = line.substr(0, equals);
    auto* target = name == "NAME" ? &found.name : name == "VERSION_ID" ? &found.version : nullptr;
    if (!target) continue;
    if (const auto value = unquoted(line.substr(equals + 1))) *target = tidied(*value);
  }
  return found;
}

Distribution distributionOf(const std::string& root) {
  for (const auto* file : {"/run/host/os-release", "/etc/os-release", "/usr/lib/os-release"}) {
    const auto text = contentsOf(root + file);
    if (!text.empty()) return parsedDistribution(text);
  }
  return {};
}

bool tells(char c) {
  return isAsciiAlphanumeric(c) || static_cast<unsigned char>(c) > 127;
}

/// What firmware says when nobody has told it anything.
bool isPlaceholder(const std::string& name) {
  static constexpr std::array<std::string_view, 19> blanks{"default",
                                                           "empty",
                                                           "invalid",
                                                           "n/a",
                                                           "none",
                                                           "not",
                                                           "null",
                                                           "oem",
                                                           "product",
                                                           "product name",
                                                           "sku",
                                                           "standard",
                                                           "system",
                                                           "system name",
                                                           "system product name",
                                                           "undefined",
                                                           "unknown",
                                                           "all series",
                                                           "system manufacturer"};
  static constexpr std::array<std::string_view, 5> phrases{
      "to be filled", "o.e.m", "default string", "not specified", "not a"};  // …vailable, …pplicable
  std::string lower = name;
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  const auto first = std::ranges::find_if(lower, tells);
  const bool oneCharacter = std::all_of(first, lower.end(), [&](char c) { return c == *first || !tells(c); });
  return oneCharacter || std::ranges::find(blanks, lower) != blanks.end() ||
         std::ranges::any_of(phrases, [&](auto phrase) { return lower.starts_with(phrase); });
}

std::string firmwareName(const std::string& root, const char* field) {
  auto name = tidied(contentsOf(root + "/sys/class/dmi/id/" + field));
  return isPlaceholder(name) ? std::string() : name;
}

/// What is read of a machine.
struct Facts {
  explicit Facts(const std::string& root)
      : distribution(distributionOf(root)),
        manufacturer(firmwareName(root, "sys_vendor")),
        product(firmwareName(root, "product_name")) {
    ::uname(&kernel);
  }

  Distribution distribution;
  std::string manufacturer;
  std::string product;
  utsname kernel{};
};

class HostDevice final : public platform::Device {
 public:
  explicit HostDevice(std::string root) : root_(std::move(root)) {}

  std::string machineIdentifier() override { return facts().kernel.machine; }
  std::optional<std::string> environmentVariable(const std::string& name) override {
    const char* value = std::getenv(name.c_str());
    return value ? std::optional<std::string>(value) : std::nullopt;
  }
  std::string systemVersion() override {
    const auto& version = facts().distribution.version;
    return version.empty() ? facts().kernel.release : version;
  }
  std::string systemName() override {
    const auto& name = facts().distribution.name;
    return name.empty() ? facts().kernel.sysname : name;
  }
  std::string systemFamily() override { return facts().kernel.sysname; }
  std::string manufacturer() override { return facts().manufacturer; }
  std::optional<std::string> productName() override {
    return facts().product.empty() ? machineIdentifier() : facts().product;
  }
  std::string languageCode() override { return posix::userLanguage(); }
  int secondsFromGMT() override { return posix::secondsFromGMT(); }
  ui::DeviceOrientation orientation() override { return ui::DeviceOrientation::landscapeLeft; }

 private:
  const Facts& facts() {
    const std::lock_guard lock(mutex_);
    if (!facts_) facts_.emplace(root_);
    return *facts_;
  }

  const std::string root_;
  std::mutex mutex_;
  std::optional<Facts> facts_;
};

}  // namespace

std::shared_ptr<platform::Device> makeHostDevice(std::string root) {
  return std::make_shared<HostDevice>(std::move(root));
}

}  // namespace VorselKelp::system
