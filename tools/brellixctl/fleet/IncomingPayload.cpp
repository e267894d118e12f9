#include "brellixctl/fleet/IncomingPayload.h"

#include "VorselKelpSystem/RemoteNotification.h"

namespace brellixctl {

using VorselKelp::JSONAny;
using VorselKelp::RemoteKind;

namespace {

// Of payloads that differ from device to device the latest few thousand are known at a time.
constexpr std::size_t mostPayloads = 4096;
constexpr std::size_t mostAddresses = 65'536;

IncomingPayload interpret(const std::string& bytes) {
  IncomingPayload payload;
  const auto json = JSONAny::decode(bytes);
  if (!json) return payload;
  payload.kind = VorselKelp::remoteKind(*json);
  payload.unchanged = VorselKelp::system::unchangedContent(*json);
  payload.unchanged.userInfo = VorselKelp::platform::UserInfo::fromJSON(bytes);
  if (payload.kind != RemoteKind::changeable) return payload;
  if (auto campaign = FleetPayload::parse(bytes, "the payload")) {
    payload.campaign = *std::move(campaign);
  } else {
    payload.kind = RemoteKind::asItCame;
  }
  return payload;
}

}  // namespace

std::shared_ptr<const IncomingPayload> IncomingPayloads::read(const std::string& bytes) {
  const auto known = payloads_.find(bytes);
  if (known != payloads_.end()) return known->second;
  const auto payload = std::make_shared<const IncomingPayload>(interpret(bytes));
  remember(bytes, payload);
  return payload;
}

void IncomingPayloads::remember(const std::string& bytes,
                                const std::shared_ptr<const IncomingPayload>& payload) {
  if (payloads_.size() == mostPayloads) payloads_.clear();
  payloads_.emplace(bytes, payload);
  if (!payload->campaign) return;
  const std::lock_guard lock(mutex_);
  if (kinds_.size() > mostAddresses) kinds_.clear();
  kinds_.insert(payload->campaign->kinds().begin(), payload->campaign->kinds().end());
}

std::string IncomingPayloads::kindOf(const std::string& url) const {
  const std::lock_guard lock(mutex_);
  const auto known = kinds_.find(url);
  return known == kinds_.end() ? std::string() : known->second;
}

}  // namespace brellixctl
