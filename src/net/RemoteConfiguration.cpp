#include "net/RemoteConfiguration.h"

#include <algorithm>
#include <utility>

#include "VorselKelp/VorselBuilder.h"
#include "base/Text.h"
#include "core/CoreScope.h"
#include "json/Decoder.h"

namespace VorselKelp {
namespace {

constexpr int lastSuccess = 299;

bool overrides(const std::optional<bool>& flag) {
  return flag.value_or(false);
}

}  // namespace

void RemoteConfiguration::fetch(const std::string& apiKey, Continuation continuation) {
  {
    const std::lock_guard lock(mutex_);
    again_ = nullptr;
  }
  requests_->fetchAutoconfig(apiKey,
                             [weak = weak_from_this(), apiKey,
                              continuation = std::move(continuation)](const platform::URLResult& result) {
                               if (const auto self = weak.lock()) self->handle(result, apiKey, continuation);
                             });
}

void RemoteConfiguration::repeat() {
  std::function<void()> again;
  {
    const std::lock_guard lock(mutex_);
    again.swap(again_);
  }
  if (again) again();
}

void RemoteConfiguration::handle(const platform::URLResult& result, const std::string& apiKey,
                                 const Continuation& continuation) {
  if (!result.response) {
    {
      const std::lock_guard lock(mutex_);
      again_ = [this, apiKey, continuation] { fetch(apiKey, continuation); };
    }
    context_->print("Error took place " +
                    (result.error ? result.error->description : std::string("no answer")));
    return;
  }
  if (result.response->statusCode > lastSuccess) continuation();
  context_->print("Response HTTP Status code: " + std::to_string(result.response->statusCode));
  // An error page without content is no document; an empty answer to a success is one that does not decode.
  if (!result.body || (result.response->statusCode > lastSuccess && result.body->empty())) return;
  apply(*result.body, apiKey);
  continuation();
}

void RemoteConfiguration::apply(const std::string& document, const std::string& apiKey) {
  const auto decoded = json::decode<Config>(std::string_view(document));
  const Config config = decoded ? *decoded : Config{};
  std::optional<std::string> text;
  if (isValidUtf8(document)) text = withoutBackslashes(withoutByteOrderMark(document));
  const auto date = context_->storage.formatDate(context_->services->clock->now());
  context_->storage.transact([&] {
    if (text) context_->storage.set(StorageKey::autoConfiguration, *text);
    context_->storage.set(StorageKey::lastModified, date);
    applyUrls(config);
    applySwitches(config, apiKey);
  });
}

void RemoteConfiguration::applyUrls(const Config& config) {
  if (!config.url) return;
  const auto apply = [this](const std::optional<std::vector<std::string>>& urls, StorageKey key) {
    if (urls && !urls->empty()) context_->storage.set(key, urls->front());
  };
  apply(config.url->user, StorageKey::userUrl);
  apply(config.url->crash, StorageKey::crashUrl);
  apply(config.url->activity, StorageKey::activityUrl);
}

void RemoteConfiguration::applySwitches(const Config& config, const std::string& apiKey) {
  // The builder brings its own defaults along: analytics is written on unless overridden, and the
  // application-group setting becomes empty. The store has its suite by now.
  const CoreScope scope(context_);
  VorselBuilder builder(apiKey, std::nullopt);
  std::optional<bool> push;
  if (const auto& group = config.pushConfig) {
    const auto isCustom = [](const Prompt& prompt) { return prompt.prompt != "native"; };
    if (group->prompts && std::ranges::any_of(*group->prompts, isCustom)) context_->state.customPrompt = true;
    if (overrides(group->override)) push = group->enabled.value_or(false);
  }
  if (const auto& group = config.analytics; group && overrides(group->override))
    builder.analytics(group->enabled.value_or(false));
  if (push.value_or(false)) builder.push();
  const auto built = builder.build();
  if (push && !*push) built->setPush(false);  // the builder can only switch push on
}

}  // namespace VorselKelp
