#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "collection_server/CollectionServer.h"

namespace brellixctl {

/// What a server has received so far. Any thread.
class RequestWatch {
 public:
  void note(const collection_server::ReceivedRequest& request) {
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
  }

  /// Whether such a request came whose body holds `text`.
  bool saw(const std::string& method, const std::string& path, const std::string& text) {
    const std::lock_guard lock(mutex_);
    return std::any_of(requests_.begin(), requests_.end(), [&](const auto& request) {
      return request.method == method && request.path == path && request.body.find(text) != std::string::npos;
    });
  }

  void setServer(std::string url) { server_ = std::move(url); }
  [[nodiscard]] const std::string& server() const { return server_; }

 private:
  std::mutex mutex_;
  std::vector<collection_server::ReceivedRequest> requests_;
  std::string server_;
};

}  // namespace brellixctl
