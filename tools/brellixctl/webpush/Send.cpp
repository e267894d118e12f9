#include <future>

#include "VorselKelpPosix/CurlURLSession.h"
#include "VorselKelpWebPush/Endpoint.h"
#include "VorselKelpWebPush/Message.h"
#include "VorselKelpWebPush/Request.h"
#include "brellixctl/Answer.h"
#include "brellixctl/Commands.h"
#include "brellixctl/PayloadFile.h"
#include "brellixctl/webpush/Arguments.h"
#include "brellixctl/webpush/PushServiceAnswer.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::Result;
using VorselKelp::Status;
namespace platform = VorselKelp::platform;
namespace webpush = VorselKelp::webpush;

namespace {

constexpr double answerPatience = 30;  // seconds
constexpr std::size_t answerLimit = std::size_t{64} << 10;

Result<std::string> readSmallPayload(const std::string& path) {
  auto bytes = readPayload(path);
  if (!bytes) return bytes;
  if (const auto json = decodePayload(*bytes, path); !json) return json.error();
  if (bytes->size() > webpush::mostInClear) {
    return Error{path + " has " + std::to_string(bytes->size()) + " bytes; push services take " +
                 std::to_string(webpush::mostInClear) + " at most"};
  }
  return bytes;
}

Status checkTransport(const std::string& url) {
  const auto endpoint = webpush::parseEndpoint(url);
  if (!endpoint) return endpoint.error();
  if (!endpoint->secure && !endpoint->loopback)
    return Error{"The endpoint is an http address, which is for this machine alone; others take https"};
  return VorselKelp::Done{};
}

Result<platform::URLRequest> requestFor(const SendRequest& request) {
  const auto payload = readSmallPayload(request.payloadPath);
  if (!payload) return payload.error();
  const auto subscription = readSubscription(request.subscription);
  if (!subscription) return subscription.error();
  if (const auto checked = checkTransport(subscription->endpoint); !checked) return checked.error();
  webpush::RequestOptions options{.ttl = request.ttl, .urgency = request.urgency};
  if (!request.collapse.empty()) options.topic = webpush::topicOf(request.collapse);
  if (!request.vapid.empty()) {
    const auto keys = readSenderKeys(request.vapid);
    if (!keys) return keys.error();
    auto authorization = authorizationFor(*keys, subscription->endpoint, request.subject);
    if (!authorization) return authorization.error();
    options.authorization = *std::move(authorization);
  }
  return webpush::makeRequest(*payload, *subscription, options);
}

platform::URLResult post(platform::URLRequest request) {
  request.timeout = answerPatience;
  request.responseLimit = answerLimit;
  std::promise<platform::URLResult> promise;
  VorselKelp::posix::URLSessionOptions options;
  options.followRedirects = false;
  const auto session = VorselKelp::posix::makeURLSession(options);
  session->send(std::move(request),
                [&](platform::URLResult result) { promise.set_value(std::move(result)); });
  return promise.get_future().get();
}

}  // namespace

int runSend(const SendRequest& request) {
  auto prepared = requestFor(request);
  if (!prepared) return fail(prepared.error());
  auto answered = interpret(post(*std::move(prepared)));
  return answer(std::move(answered.json), answered.words, answered.failure);
}

}  // namespace brellixctl
