#include "gateway/provider/Checker.h"

#include <algorithm>
#include <utility>

#include "VorselKelp/JSONAny.h"
#include "gateway/provider/DevicePath.h"
#include "gateway/provider/Fields.h"

namespace gateway {

using VorselKelp::JSONAny;

namespace {

constexpr std::size_t mostPayload = 4096;  // bytes; Request::mostBody with calls

std::optional<Answer> readPayload(Request& request, Notification& notification) {
  if (request.bodyTooLarge || (request.body.size() > mostPayload && notification.type != PushType::voip))
    return Answer{413, "PayloadTooLarge"};
  const auto json = JSONAny::decode(request.body);
  // The protocol has no word of its own for what is no JSON.
  if (!json || !json->as<JSONAny::Dictionary>()) return Answer{400, "PayloadEmpty"};
  notification.payload = std::move(request.body);
  return {};
}

}  // namespace

Checker::Checker(CheckOptions options, ProviderTokens tokens)
    : options_(std::move(options)), tokens_(std::move(tokens)) {}

std::variant<Notification, Answer> Checker::check(Request request, ShownTokens& shown) {
  if (request.method != "POST") return Answer{405, "MethodNotAllowed"};
  auto device = deviceOf(request.path);
  if (auto* answer = std::get_if<Answer>(&device)) return *answer;
  Notification notification;
  notification.device = std::get<std::string>(std::move(device));
  if (!options_.open) {
    if (auto answer = tokens_.check(request.find("authorization"), shown)) return *std::move(answer);
  }
  if (auto answer = readFields(request, notification)) return *std::move(answer);
  if (auto answer = checkTopic(notification.topic)) return *std::move(answer);
  if (auto answer = readPayload(request, notification)) return *std::move(answer);
  return notification;
}

std::optional<Answer> Checker::checkTopic(const std::string& topic) const {
  if (options_.topics.empty() || std::ranges::find(options_.topics, topic) != options_.topics.end())
    return {};
  return Answer{400, "TopicDisallowed"};
}

}  // namespace gateway
