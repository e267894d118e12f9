#include "net/ReportBuilder.h"

#include <optional>
#include <utility>

#include "base/Date.h"
#include "base/Text.h"

namespace VorselKelp {
namespace {

constexpr std::string_view versionKey = "CFBundleShortVersionString";

std::string bundleIdentifier(const platform::Platform& services) {
  return services.bundle->mainBundleText("CFBundleIdentifier").value_or("Bundle error");
}

/// What a system or an application says of itself; an empty text says nothing, and is left out.
std::optional<std::string> told(std::optional<std::string> text) {
  return text && text->empty() ? std::nullopt : std::move(text);
}

UserAgent userAgent(const platform::Platform& services) {
  const std::string size =
      decimalText(services.screen->height()) + "x" + decimalText(services.screen->width());
  UserAgent agent;
  agent.z = 1;
  agent.t = told(services.device->systemFamily());
  agent.de = told(services.device->languageCode());
  agent.sr = size;
  agent.vp = size;
  agent.v = told(services.bundle->mainBundleText(versionKey));
  return agent;
}

}  // namespace

std::string ReportBuilder::modelName() const {
  auto& device = *context_->services->device;
  if (auto name = device.productName()) return *std::move(name);
  return std::string(device_.modelName(machineIdentifier(device)));
}

ActivityBody ReportBuilder::activity(CS session) const {
  const auto& services = *context_->services;
  ActivityBody body;
  body.timestamp = wholeSeconds(services.clock->now());
  body.app = bundleIdentifier(services);
  body.sdkVersion = told(services.bundle->libraryBundleText(versionKey));
  body.rid = context_->storage.text(StorageKey::userId);
  body.version = told(services.device->systemVersion());
  body.vt = context_->storage.text(StorageKey::uniqueSessionFirstTime);
  body.model = modelName();
  body.lang = told(services.device->languageCode());
  body.tmz = services.device->secondsFromGMT() / 3600;
  body.u = context_->state.userValues();
  body.dr = context_->state.referrer();
  body.dl = context_->state.link();
  body.ua = userAgent(services);
  body.cs = std::move(session);
  return body;
}

PushBody ReportBuilder::push(CS session, std::string token) const {
  constexpr std::int64_t tokenReport = 200;
  const auto& services = *context_->services;
  PushBody body;
  body.timestamp = wholeSeconds(services.clock->now());
  body.app = bundleIdentifier(services);
  body.appVersion = told(services.bundle->mainBundleText(versionKey));
  body.sdkVersion = told(services.bundle->libraryBundleText(versionKey));
  body.os = services.device->systemName();
  body.version = told(services.device->systemVersion());
  body.mfg = told(services.device->manufacturer());
  body.model = modelName();
  body.sdk = "VorselKelp";
  body.lang = told(services.device->languageCode());
  body.u = context_->state.userValues();
  body.token = std::move(token);
  body.status = true;  // only a granted permission leads here
  body.cs = std::move(session);
  body.rid = context_->storage.text(StorageKey::userId);
  body.code = tokenReport;
  body.bundle = body.app;
  return body;
}

}  // namespace VorselKelp
