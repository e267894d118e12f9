#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "VorselKelpPosix/CurlURLSession.h"

namespace VorselKelp::testing_support {

using platform::URLRequest;
using platform::URLResult;

class SessionFixture : public testing::Test {
 protected:
  /// The servers are on this machine, whatever proxy the environment names.
  static void SetUpTestSuite() { ::setenv("no_proxy", "*", 1); }

  [[nodiscard]] static URLRequest request(std::string url) {
    URLRequest request;
    request.url = std::move(url);
    request.timeout = 20;
    return request;
  }
  std::future<URLResult> start(URLRequest what) {
    auto promise = std::make_shared<std::promise<URLResult>>();
    auto future = promise->get_future();
    session_->send(std::move(what), [promise](URLResult result) { promise->set_value(std::move(result)); });
    return future;
  }
  URLResult fetch(URLRequest what) { return start(std::move(what)).get(); }
  URLResult fetch(std::string url) { return fetch(request(std::move(url))); }

  std::shared_ptr<platform::URLSession> session_ = posix::makeURLSession();
};

/// Opens once, and lets everybody through from then on.
class Gate {
 public:
  void open() {
    const std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }
  void wait() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return open_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool open_ = false;
};

}  // namespace VorselKelp::testing_support
