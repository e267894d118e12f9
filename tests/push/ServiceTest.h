#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "kellp/KellpTest.h"

namespace VorselKelp {

/// The library inside the service extension's process of the application.
class ServiceTest : public KellpTest {
 protected:
  ServiceTest() {
    VorselKellp::install(service_.platform());
    VorselKellp::setValueFor(group);
  }

  static platform::NotificationRequest request(const std::string& json, const std::string& identifier) {
    platform::NotificationRequest made;
    made.identifier = identifier;
    made.content.userInfo = platform::UserInfo::fromJSON(json);
    return made;
  }
  static std::string message(const std::string& alertMembers) {
    return R"({"aps":{"alert":{"title":"T")" + alertMembers + R"(},"mutable-content":1}})";
  }

  /// Hands a remote notification to the library; what the content handler gets is collected in handled_.
  std::shared_ptr<platform::NotificationContent> deliver(const std::string& json,
                                                         const std::string& identifier = "n-1") {
    auto best = std::make_shared<platform::NotificationContent>();
    best->title = "as sent";
    best->body = "as sent";
    best->sound = platform::NotificationSound::named("as sent");
    EXPECT_FALSE(VorselKellp::didReceiveNotification(
        request(json, identifier), best, [this](auto content) { handled_.push_back(std::move(content)); }));
    return best;
  }

  std::vector<std::string> serviceLines() const { return service_.console->texts(); }

  /// How many files of attachments there are, those that are still being written included.
  std::size_t attachmentFiles() const {
    const auto paths = device_->files->paths();
    return static_cast<std::size_t>(std::count_if(paths.begin(), paths.end(), [](const std::string& path) {
      return path.find("/vorsel-attachment-") != std::string::npos;
    }));
  }

  testing_platform::MemoryPlatform service_{device_, testing_platform::ProcessKind::extension,
                                            "com.example.app.service"};
  std::vector<std::shared_ptr<platform::NotificationContent>> handled_;
};

}  // namespace VorselKelp
