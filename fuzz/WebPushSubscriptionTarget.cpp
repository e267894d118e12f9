// What is said to be a push subscription: what is taken can be written, and reads back as the same.

#include "VorselKelpPosix/Hex.h"
#include "VorselKelpWebPush/Base64Url.h"
#include "VorselKelpWebPush/Endpoint.h"
#include "VorselKelpWebPush/Subscription.h"
#include "support/Expect.h"
#include "support/Input.h"

namespace {

using namespace VorselKelp;

void checkEndpoint(const std::string& url) {
  const auto endpoint = webpush::parseEndpoint(url);
  if (!endpoint) return;
  const auto again = webpush::parseEndpoint(endpoint->origin);
  FUZZ_EXPECT(again && again->origin == endpoint->origin);
  FUZZ_EXPECT(again->secure == endpoint->secure && again->loopback == endpoint->loopback);
  FUZZ_EXPECT(endpoint->origin.size() <= url.size());
}

void checkBase64(const std::string& text) {
  FUZZ_EXPECT(*webpush::fromBase64Url(webpush::toBase64Url(text)) == text);
  const auto bytes = webpush::fromBase64Url(text);
  FUZZ_EXPECT(!bytes || webpush::toBase64Url(*bytes) == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::Input(data, size).all();
  checkEndpoint(text);
  checkBase64(text);
  const auto subscription = webpush::parseSubscription(text);
  if (!subscription) {
    FUZZ_EXPECT(subscription.error().description.find('\n') == std::string::npos);
    return 0;
  }
  FUZZ_EXPECT(webpush::parseEndpoint(subscription->endpoint));
  const auto written = webpush::subscriptionText(*subscription);
  for (const auto& form : {written, posix::hexOf(written)}) {
    const auto again = webpush::parseSubscription(form);
    FUZZ_EXPECT(again && *again == *subscription);
    FUZZ_EXPECT(webpush::subscriptionText(*again) == written);
  }
  return 0;
}
