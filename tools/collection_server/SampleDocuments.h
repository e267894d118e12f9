#pragma once

#include <string>

namespace collection_server {

/// An ad feed's answer with one ad whose picture and trackers lead to `server`.
std::string sampleAd(const std::string& server);

}  // namespace collection_server
