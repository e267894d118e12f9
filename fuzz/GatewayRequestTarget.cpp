// What a provider may ask for and show as its token: what is taken is within its bounds, and whatever comes
// in as HTTP/2 ends a connection at worst.

#include "VorselKelp/JSONAny.h"
#include "gateway/http2/Session.h"
#include "gateway/identity/Certificates.h"
#include "gateway/provider/Checker.h"
#include "support/Expect.h"
#include "support/Input.h"

namespace {

using namespace gateway;

class Events final : public Session::Events {
 public:
  void requested(std::int32_t stream, Request request, Load) override {
    FUZZ_EXPECT(request.body.size() <= Request::mostBody);
    session->answer(stream, {200, {}, {}});
  }
  [[nodiscard]] Response refusal(std::int32_t, int status, const Request&) override {
    return {status, {}, {}};
  }

  Session* session = nullptr;
};

void checkConnection(const std::string& bytes) {
  Events events;
  Session session(events, Limits(), std::make_shared<Budget>(std::size_t{1} << 20));
  events.session = &session;
  const std::string preface = "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n";
  bool good = true;
  for (const auto& part : {preface, bytes}) {
    good = good && session.take(part);
    while (!session.next().empty()) {
    }
  }
}

ProviderTokens tokens() {
  static const auto key = VerifyingKey::ofPem(*makeKey());
  return ProviderTokens({{"KEY", "TEAM", *key}}, [] { return 1'800'000'000; });
}

/// A line for the path, one for each field ("name: value"), an empty one, and the body.
Request requestOf(const std::string& text) {
  Request request{"POST", {}, {}, {}, false};
  std::size_t begin = 0;
  for (bool first = true;; first = false) {
    const auto end = text.find('\n', begin);
    const auto line = text.substr(begin, end == std::string::npos ? end : end - begin);
    if (end == std::string::npos || (line.empty() && !first)) {
      request.body = end == std::string::npos ? "" : text.substr(end + 1, Request::mostBody);
      return request;
    }
    const auto colon = line.find(": ");
    if (first)
      request.path = line;
    else if (colon != std::string::npos)
      request.fields.push_back({line.substr(0, colon), line.substr(colon + 2)});
    begin = end + 1;
  }
}

void checkRequest(const std::string& text) {
  for (const bool open : {true, false}) {
    Checker checker({{}, open}, tokens());
    ShownTokens shown;
    const auto checked = checker.check(requestOf(text), shown);
    if (const auto* answer = std::get_if<Answer>(&checked)) {
      FUZZ_EXPECT(answer->status >= 400 && !answer->reason.empty());
      continue;
    }
    const auto& notification = std::get<Notification>(checked);
    FUZZ_EXPECT(open);
    FUZZ_EXPECT(notification.identifier.size() == 36 && !notification.topic.empty());
    FUZZ_EXPECT(notification.collapse.size() <= 64 && notification.device.size() <= 1400);
    FUZZ_EXPECT(VorselKelp::JSONAny::decode(notification.payload).ok());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::Input(data, size).all();
  checkRequest(text);
  checkConnection(text);
  return 0;
}
