#include "VorselKelpWebPush/Request.h"

#include <algorithm>
#include <array>

#include "VorselKelpWebPush/Base64Url.h"
#include "VorselKelpWebPush/Message.h"
#include "crypto/OpenSsl.h"

namespace VorselKelp::webpush {
namespace {

constexpr std::size_t topicSize = 32;

bool isUrgency(const std::string& word) {
  return std::ranges::any_of(std::array{"very-low", "low", "normal", "high"},
                             [&](const char* each) { return word == each; });
}

bool isTopic(const std::string& topic) {
  return topic.size() <= topicSize && std::ranges::all_of(topic, [](char c) {
           return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
                  c == '_';
         });
}

}  // namespace

Result<platform::URLRequest> makeRequest(std::string_view text, const Subscription& subscription,
                                         const RequestOptions& options) {
  if (!options.urgency.empty() && !isUrgency(options.urgency))
    return Error{"The urgency is none of very-low, low, normal and high"};
  if (!isTopic(options.topic))
    return Error{"The topic is not of 32 letters, digits, \"-\" and \"_\" at most"};
  auto body = encrypt(text, subscription);
  if (!body) return body.error();
  platform::URLRequest request;
  request.method = "POST";
  request.url = subscription.endpoint;
  request.body = *std::move(body);
  request.headers = {{"TTL", std::to_string(options.ttl)},
                     {"Content-Encoding", "aes128gcm"},
                     {"Content-Type", "application/octet-stream"}};
  for (const auto& [name, value] : {std::pair{"Urgency", options.urgency}, std::pair{"Topic", options.topic},
                                    std::pair{"Authorization", options.authorization}}) {
    if (!value.empty()) request.headers.push_back({name, value});
  }
  return request;
}

std::string topicOf(std::string_view identifier) {
  std::string hash(32, '\0');
  if (EVP_Q_digest(nullptr, "SHA256", nullptr, identifier.data(), identifier.size(), bytesOf(hash),
                   nullptr) != 1)
    return {};
  return toBase64Url(hash).substr(0, topicSize);
}

}  // namespace VorselKelp::webpush
