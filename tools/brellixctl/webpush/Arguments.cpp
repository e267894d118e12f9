#include "brellixctl/webpush/Arguments.h"

#include <chrono>
#include <filesystem>

#include "brellixctl/PayloadFile.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::Result;
namespace webpush = VorselKelp::webpush;

namespace {

bool namesFile(const std::string& argument) {
  std::error_code ignored;
  return argument == "-" || std::filesystem::exists(argument, ignored);
}

bool isSubscriptionText(const std::string& argument) {
  return argument.starts_with('{') ||
         argument.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
}

}  // namespace

Result<webpush::Subscription> readSubscription(const std::string& argument) {
  if (!namesFile(argument) && isSubscriptionText(argument)) return webpush::parseSubscription(argument);
  const auto text = readPayload(argument);
  if (!text) return text.error();
  return webpush::parseSubscription(*text);
}

Result<webpush::VapidKeys> readSenderKeys(const std::string& argument) {
  if (!namesFile(argument)) {
    auto keys = webpush::readVapidKeys(argument);
    return keys ? std::move(keys)
                : Error{"The sender's key is in no such file, and is none itself: " +
                        keys.error().description};
  }
  const auto text = readPayload(argument);
  if (!text) return text.error();
  auto keys = webpush::readVapidKeys(*text);
  return keys ? std::move(keys) : Error{argument + " holds no sender's key: " + keys.error().description};
}

Result<std::string> authorizationFor(const webpush::VapidKeys& keys, const std::string& endpoint,
                                     const std::string& subject) {
  using std::chrono::system_clock;
  const auto now = std::chrono::floor<std::chrono::seconds>(system_clock::now());
  return webpush::vapidAuthorization(keys, endpoint, subject, now + std::chrono::hours(12));
}

}  // namespace brellixctl
