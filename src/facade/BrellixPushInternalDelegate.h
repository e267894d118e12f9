#pragma once

#include <functional>
#include <string>

#include "VorselKelp/VorselKellpDelegate.h"

namespace BrellixPush {

/// The core's delegate while the facade leads it: passes on the two events that the facade has.
class BrellixPushInternalDelegate final : public VorselKelp::VorselKellpDelegate {
 public:
  BrellixPushInternalDelegate(std::function<void(bool)> inited, std::function<void(std::string)> tokenChanged)
      : serviceInited_(std::move(inited)), notificationTokenChanged_(std::move(tokenChanged)) {}

  void vorselInited(bool success) override { serviceInited_(success); }
  void notificationTokenChanged(const std::string& token) override { notificationTokenChanged_(token); }

 private:
  std::function<void(bool)> serviceInited_;
  std::function<void(std::string)> notificationTokenChanged_;
};

}  // namespace BrellixPush
