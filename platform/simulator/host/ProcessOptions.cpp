#include "host/ProcessOptions.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <type_traits>

namespace VorselKelp::simulator {
namespace {

template <class Number>
bool readNumber(std::string_view text, Number& number) {
  const auto* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if constexpr (std::is_floating_point_v<Number>) {
    if (!std::isfinite(number)) return false;
  }
  return error == std::errc() && stop == end && number >= 0;
}

ProcessOptions::Tap& tapOf(ProcessOptions& options) {
  if (!options.tap) options.tap = ProcessOptions::Tap();
  return *options.tap;
}

bool setNumber(ProcessOptions& options, std::string_view name, std::string_view value) {
  if (name == "--channel") return readNumber(value, options.channel.emplace());
  return readNumber(value, options.timeLimit.emplace());
}

bool setActs(ProcessOptions& options, std::string_view value) {
  if (value.ends_with(',')) return false;
  while (!value.empty()) {
    const auto act = value.substr(0, value.find(','));
    if (act != "right" && act != "left" && act != "open") return false;
    options.acts.emplace_back(act);
    value.remove_prefix(std::min(value.size(), act.size() + 1));
  }
  return true;
}

bool setChoice(ProcessOptions& options, std::string_view name, std::string_view value) {
  if (name == "--answer") {
    if (value != "allow" && value != "deny") return false;
    options.answer = value == "allow" ? DialogAnswer::allow : DialogAnswer::deny;
    return true;
  }
  if (name == "--prompt") {
    if (value != "ok" && value != "cancel") return false;
    options.promptAnswer = value == "ok" ? PromptAnswer::ok : PromptAnswer::cancel;
    return true;
  }
  if (name == "--do") return setActs(options, value);
  if (name == "--beacon") {
    auto event = parseBeaconEvent(value);
    if (event) options.beacons.push_back(std::move(*event));
    return event.ok();
  }
  const auto equals = value.find('=');
  if (equals == std::string_view::npos) return false;
  options.calls.emplace_back(value.substr(0, equals), value.substr(equals + 1));
  return true;
}

/// Absent when there is no such option; otherwise whether the value makes sense.
std::optional<bool> setOption(ProcessOptions& options, std::string_view name, std::string_view value) {
  if (name == "--channel" || name == "--time-limit") return setNumber(options, name, value);
  if (name == "--answer" || name == "--prompt" || name == "--call" || name == "--beacon" || name == "--do") {
    return setChoice(options, name, value);
  }
  if (name == "--action") {
    tapOf(options).action = value;
    return true;
  }
  std::string* target = name == "--home"          ? &options.home
                        : name == "--app"         ? &options.manifest
                        : name == "--payload"     ? &options.payload
                        : name == "--id"          ? &options.identifier
                        : name == "--notify"      ? &options.notify
                        : name == "--script-host" ? &options.scriptHost
                        : name == "--png"         ? &options.png
                        : name == "--pictures"    ? &options.pictures
                        : name == "--tap"         ? &tapOf(options).identifier
                                                  : nullptr;
  if (target == nullptr) return std::nullopt;
  *target = value;
  return !value.empty();
}

}  // namespace

Result<ProcessOptions> readOptions(int argc, const char* const* argv) {
  ProcessOptions options;
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    if (name == "--stay") {
      options.stay = true;
      continue;
    }
    if (name == "--background") {
      options.background = true;
      continue;
    }
    if (name == "--no-handle") {
      tapOf(options).handle = false;
      continue;
    }
    const bool hasValue = i + 1 < argc;
    const auto set = setOption(options, name, hasValue ? argv[i + 1] : "");
    if (!set) return Error{"There is no option " + name};
    if (!hasValue) return Error{"The option " + name + " needs a value"};
    if (!*set) return Error{"The option " + name + " does not take \"" + argv[i + 1] + "\""};
    ++i;
  }
  if (options.home.empty() || options.manifest.empty()) {
    return Error{"Give the simulated device with --home DIR and the application's manifest with --app FILE"};
  }
  if (options.tap && options.tap->identifier.empty()) {
    return Error{"--action and --no-handle belong to --tap ID"};
  }
  return options;
}

}  // namespace VorselKelp::simulator
