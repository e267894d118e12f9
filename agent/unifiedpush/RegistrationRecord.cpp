#include "unifiedpush/RegistrationRecord.h"

#include <ctime>
#include <optional>
#include <utility>

#include "glib/Pointers.h"

namespace VorselKelp::agent {
namespace {

double now() {
  return static_cast<double>(std::time(nullptr));
}

std::string newToken() {
  return freedesktop::TextPtr(g_uuid_string_random()).get();
}

std::optional<std::string> unlessEmpty(const std::string& text) {
  return text.empty() ? std::nullopt : std::optional(text);
}

}  // namespace

Result<std::string> RegistrationRecord::load(State& state) {
  state_ = &state;
  Status status = Done{};
  const auto read = [&](const char* name) {
    const auto value = state_->setting(name);
    if (!value) status = value.error();
    return value ? value->value_or("") : std::string();
  };
  wanted_ = read("wanted") == "yes";
  distributor_ = read("distributor");
  token_ = read("token");
  vapidKey_ = read("vapidKey");
  registeredIn_ = read("registeredIn");
  auto endpoint = read("endpoint");
  const auto keys = state_->keys(now());
  if (!keys) return keys.error();
  if (!keys->empty()) keys_ = keys->front();
  if (!status) return status.error();
  return endpoint;
}

Status RegistrationRecord::want() {
  if (auto status = state_->set({{"wanted", "yes"}}); !status) return status;
  wanted_ = true;
  return Done{};
}

Status RegistrationRecord::giveUp() {
  wanted_ = false;
  token_.clear();
  registeredIn_.clear();
  return state_->set(
      {{"wanted", {}}, {"token", {}}, {"endpoint", {}}, {"registeredIn", {}}, {"vapidKey", {}}});
}

Status RegistrationRecord::renew(const std::string& distributor, const std::string& vapidKey) {
  distributor_ = distributor;
  token_.clear();
  auto keys = webpush::makeReceiverKeys();
  if (!keys) return keys.error();
  if (auto status = state_->addKeys(*keys, now()); !status) return status;
  keys_ = *std::move(keys);
  const auto token = newToken();
  auto status = state_->set({{"distributor", distributor_},
                             {"token", token},
                             {"vapidKey", vapidKey},
                             {"endpoint", {}},
                             {"registeredIn", {}}});
  if (!status) return status;
  token_ = token;
  vapidKey_ = vapidKey;
  registeredIn_.clear();
  return Done{};
}

Status RegistrationRecord::noteSession(const std::string& session) {
  registeredIn_ = session;
  return state_->set({{"registeredIn", unlessEmpty(session)}});
}

Status RegistrationRecord::noteEndpoint(const std::string& endpoint) {
  return state_->set({{"endpoint", unlessEmpty(endpoint)}});
}

Status RegistrationRecord::forget() {
  token_.clear();
  registeredIn_.clear();
  return state_->set({{"token", {}}, {"endpoint", {}}, {"registeredIn", {}}});
}

}  // namespace VorselKelp::agent
