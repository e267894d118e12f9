#include <utility>

#include "VorselKelp/platform/Notification.h"

namespace VorselKelp::platform {

UserInfo::UserInfo(JSONAny::Dictionary dictionary)
    : dictionary_(std::make_shared<const JSONAny::Dictionary>(std::move(dictionary))) {}

UserInfo UserInfo::fromJSON(std::string bytes) {
  UserInfo info;
  info.dictionary_ = nullptr;
  info.bytes_ = std::make_shared<const std::string>(std::move(bytes));
  return info;
}

}  // namespace VorselKelp::platform
