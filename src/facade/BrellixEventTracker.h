#pragma once

#include <map>
#include <memory>
#include <string>

#include "core/CoreContext.h"

namespace BrellixPush {

/// An event as the publisher's server gets it: query items by name.
using Event = std::map<std::string, std::string>;

[[nodiscard]] Event askedEvent();
[[nodiscard]] Event allowedEvent();
[[nodiscard]] Event blockedEvent();

/// Reports events to the publisher's event endpoint, each one at most once per installation. An event counts
/// as sent before its request is made: a request that fails is not made again. Any thread.
class BrellixEventTracker {
 public:
  /// The context is held weakly: it holds the facade, which holds the tracker.
  BrellixEventTracker(std::weak_ptr<VorselKelp::CoreContext> context, std::string publisherId,
                      std::string source)
      : context_(std::move(context)), publisherId_(std::move(publisherId)), source_(std::move(source)) {}

  void send(const Event& event);

  [[nodiscard]] const std::string& publisherId() const { return publisherId_; }
  [[nodiscard]] const std::string& source() const { return source_; }

 private:
  /// Marks the event as sent; false when it was before, and when the store refuses the mark, which is a line.
  /// Of threads and processes that do so at once, one succeeds.
  [[nodiscard]] static bool mark(const VorselKelp::CoreContext& context, const std::string& key);
  [[nodiscard]] std::string url(const VorselKelp::CoreContext& context, const Event& event) const;

  std::weak_ptr<VorselKelp::CoreContext> context_;
  std::string publisherId_;
  std::string source_;
};

}  // namespace BrellixPush
