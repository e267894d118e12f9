#include "analytics/Tracking.h"

#include <string_view>
#include <utility>

#include "analytics/Utm.h"
#include "base/FatalError.h"
#include "base/Text.h"
#include "json/Encoder.h"

namespace VorselKelp {
namespace {

constexpr double resendDelay = 0.5;
/// The report that tells the application how long the server has been out of reach is made once, at this try.
constexpr int reportedRetry = 10;

constexpr std::string_view initializeBanner =
    "     ****************************\n     * Please initialize SDK *\n     ****************************";
constexpr std::string_view pushBanner =
    "**********************************************\n"
    "* Please enable push to use tracking events. *\n"
    "**********************************************";

std::string missing(const std::string& key) {
  return "Error! Key: " + key + " does not exist";
}

std::string description(const JSONAny& value) {
  if (const auto* text = value.as<std::string>()) return *text;
  auto json = value.encode();
  return json ? *std::move(json) : "?";
}

}  // namespace

bool Tracking::ready() const {
  const bool initialised = context_->state.initialised;
  if (!initialised) context_->print(initializeBanner);
  return initialised;
}

void Tracking::track(const JSONAny::Dictionary& parameters) {
  if (!ready() || !context_->storage.flag(StorageKey::analytics)) return;
  const std::lock_guard lock(mutex_);
  for (const auto& [key, value] : parameters) working_[key] = description(value);
}

void Tracking::sendTrack(Completion completion) {
  {
    const std::lock_guard lock(mutex_);
    pending_.swap(completion);
  }
  send();
}

void Tracking::send() {
  if (!ready()) return;
  auto& storage = context_->storage;
  if (!storage.flag(StorageKey::push)) {
    context_->print(pushBanner);
    return;
  }
  Parameters merged = getTrack();
  merged.merge(storage.textMap(StorageKey::extraParameters).value_or(Parameters{}));  // working entries win
  auto session = readSessionValues(*context_);
  if (!session) return;
  ActivityBody body = reports_->activity(sessionBlock(*std::move(session)));
  body.e = std::move(merged);
  if (const auto json = json::encode(body); !json) fatalError("sendTrack: " + json.error().description);
  requests_->sendActivityLocationEvent(
      body,
      [weak = weak_from_this()](const VorselRequest::Response& response, const std::optional<Error>& error) {
        if (const auto self = weak.lock()) self->answered(response, error);
      });
}

void Tracking::answered(const VorselRequest::Response& response, const std::optional<Error>& error) {
  const std::optional<int> status = response ? std::optional(response->statusCode) : std::nullopt;
  if (status == httpCreated) {
    report(status, "Success", error);
    storeAccepted();
  } else {
    report(status, "Failed", error);
  }
  if (error) resendLater(status, error);
}

void Tracking::storeAccepted() {
  const std::lock_guard lock(mutex_);
  platform::DefaultsValue::Map accepted;
  for (const auto& [key, value] : working_) accepted.emplace(key, platform::DefaultsValue{value});
  context_->storage.set(StorageKey::extraParameters, std::move(accepted));
  context_->storage.synchronize();
}

void Tracking::resendLater(std::optional<int> status, const std::optional<Error>& error) {
  {
    const std::lock_guard lock(mutex_);
    ++retries_;
  }
  context_->services->mainQueue->asyncAfter(resendDelay, [weak = weak_from_this(), status, error] {
    const auto self = weak.lock();
    if (!self) return;
    bool due = false;
    {  // before the new try, whose own failure may be counted in no time
      const std::lock_guard lock(self->mutex_);
      due = self->retries_ == reportedRetry;
    }
    self->send();
    if (due) self->report(status, "", error);
  });
}

void Tracking::report(std::optional<int> status, const std::string& message,
                      const std::optional<Error>& error) {
  Completion completion;
  {
    const std::lock_guard lock(mutex_);
    completion = pending_;
  }
  if (completion) completion(status, trimmed(message), error);
}

Tracking::Parameters Tracking::getTrack() {
  if (!ready()) return {};
  const std::lock_guard lock(mutex_);
  return working_;
}

std::string Tracking::getTrackFor(const std::string& key) {
  if (!ready()) return "Vorsel not initialized";
  const std::lock_guard lock(mutex_);
  const auto found = working_.find(key);
  return found == working_.end() ? missing(key) : found->second;
}

void Tracking::removeTrack() {
  if (!ready()) return;
  const std::lock_guard lock(mutex_);  // over both maps, so that an answer under way does not bring one back
  working_.clear();
  context_->storage.remove(StorageKey::extraParameters);
}

void Tracking::removeTrackFor(const std::string& key) {
  if (!ready()) return;
  {
    const std::lock_guard lock(mutex_);
    working_.erase(key);
    context_->storage.removeTextEntry(StorageKey::extraParameters, key);
  }
  context_->print("Value for key: " + key + " successfully removed");
}

void Tracking::setUtm(const std::string& key, const std::string& value) {
  if (ready()) storeUtm(*context_, key, value);
}

void Tracking::removeUtm(const std::string& key) {
  if (ready()) context_->storage.removeTextEntry(StorageKey::utm, "utm_" + key);
}

std::string Tracking::getUtm(const std::string& key) {
  if (!ready()) return "Vorsel not initialized";
  return context_->storage.textEntry(StorageKey::utm, "utm_" + key).value_or(missing(key));
}

}  // namespace VorselKelp
