#include "VorselKelpFreedesktop/HostDevice.h"

#include <sys/utsname.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/Locale.h"
#include "bus/BusText.h"
#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr std::size_t longestFile = std::size_t{64} << 10;
constexpr std::size_t longestFact = 128;  // bytes

std::string contentsOf(const std::string& path) {
  auto read = posix::readWholeFile(path, longestFile);
  return read ? *std::move(read) : std::string();
}

/// The first line as valid text without control characters, and without space at both ends.
std::string tidied(std::string_view text) {
  std::string line = busText(text.substr(0, text.find_first_of(std::string_view("\n\0", 2))), longestFact);
  std::ranges::replace_if(
      line, [](char c) { return g_ascii_iscntrl(c) != FALSE; }, ' ');
  return g_strstrip(line.data());
}

struct Distribution {
  std::string name;
  std::string version;
};

/// By its os-release file: assignments as a shell reads them.
Distribution parsedDistribution(std::string_view text) {
  Distribution found;
  while (!text.empty()) {
    const std::string line(text.substr(0, text.find('\n')));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    const auto equals = line.find('=');
    if (equals == std::string::npos) continue;
    const auto name = std::string_view(line).substr(0, equals);
    auto* target = name == "NAME" ? &found.name : name == "VERSION_ID" ? &found.version : nullptr;
    if (!target) continue;
    const TextPtr value(g_shell_unquote(line.c_str() + equals + 1, nullptr));
    if (value) *target = tidied(value.get());
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
  return g_ascii_isalnum(c) || static_cast<unsigned char>(c) > 127;
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
  const std::string lower = TextPtr(g_ascii_strdown(name.c_str(), -1)).get();
  const auto first = std::ranges::find_if(lower, tells);
  const bool oneCharacter = std::all_of(first, lower.end(), [&](char c) { return c == *first || !tells(c); });
  return oneCharacter || std::ranges::find(blanks, lower) != blanks.end() ||
         std::ranges::any_of(phrases, [&](auto phrase) { return lower.starts_with(phrase); });
}

std::string firmwareName(const std::string& root, const char* field) {
  auto name = tidied(contentsOf(root + "/sys/class/dmi/id/" + field));
  return isPlaceholder(name) ? std::string() : name;
}

class HostDevice final : public platform::Device {
 public:
  explicit HostDevice(const std::string& root)
      : distribution_(distributionOf(root)),
        manufacturer_(firmwareName(root, "sys_vendor")),
        product_(firmwareName(root, "product_name")) {
    ::uname(&kernel_);
  }

  std::string machineIdentifier() override { return kernel_.machine; }
  std::optional<std::string> environmentVariable(const std::string& name) override {
    const char* value = std::getenv(name.c_str());
    return value ? std::optional<std::string>(value) : std::nullopt;
  }
  std::string systemVersion() override {
    return distribution_.version.empty() ? kernel_.release : distribution_.version;
  }
  std::string systemName() override {
    return distribution_.name.empty() ? kernel_.sysname : distribution_.name;
  }
  std::string systemFamily() override { return kernel_.sysname; }
  std::string manufacturer() override { return manufacturer_; }
  std::optional<std::string> productName() override {
    return product_.empty() ? machineIdentifier() : product_;
  }
  std::string languageCode() override { return posix::userLanguage(); }
  int secondsFromGMT() override { return posix::secondsFromGMT(); }
  ui::DeviceOrientation orientation() override { return ui::DeviceOrientation::landscapeLeft; }

 private:
  const Distribution distribution_;
  const std::string manufacturer_;
  const std::string product_;
  utsname kernel_{};
};

}  // namespace

std::shared_ptr<platform::Device> makeDevice(const std::string& root) {
  return std::make_shared<HostDevice>(root);
}

}  // namespace VorselKelp::freedesktop
