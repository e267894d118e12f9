#pragma once

#include <string>

#include "VorselKelp/platform/Platform.h"

namespace VorselKelp {

/// The default URLs. Every start writes them into the store until the installation was reported; the remote
/// configuration may replace them there.
class URLConstants {
 public:
  explicit URLConstants(const platform::Endpoints& endpoints)
      : activity(endpoints.collection + "/v2/activity?type=mobile"),
        user(endpoints.collection + "/v2/users?type=mobile"),
        config(endpoints.tag + "/tag") {}

  std::string activity;
  std::string user;
  std::string config;
};

}  // namespace VorselKelp
