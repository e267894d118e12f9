#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelp/platform/Console.h"

namespace VorselKelp::system {

/// What a process tells whoever started it: one JSON object a line, each with one member that names the
/// event. Without a descriptor nothing is told. Any thread.
class VORSELKELP_API EventChannel {
 public:
  explicit EventChannel(std::optional<int> descriptor);

  [[nodiscard]] bool connected() const { return descriptor_.has_value(); }
  void send(std::string_view event, JSONAny value);

 private:
  const std::optional<int> descriptor_;
  std::mutex mutex_;
};

/// Each text printed becomes one event "console"; without a descriptor the texts go to standard output.
VORSELKELP_API std::shared_ptr<platform::Console> makeChannelConsole(std::shared_ptr<EventChannel> channel);

}  // namespace VorselKelp::system
