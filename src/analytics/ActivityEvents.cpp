#include "analytics/ActivityEvents.h"

#include <utility>

#include "base/FatalError.h"
#include "net/ResponseText.h"

namespace VorselKelp {
namespace {

constexpr std::int64_t installCode = 200;
constexpr std::int64_t openCode = 205;

}  // namespace

ActivityEvents::ActivityEvents(std::shared_ptr<CoreContext> context, std::shared_ptr<VorselRequest> requests,
                               std::shared_ptr<ReportBuilder> reports)
    : context_(std::move(context)), requests_(std::move(requests)), reports_(std::move(reports)) {}

void ActivityEvents::startActivity(const Parameters& parameters) {
  const bool reported = context_->storage.flag(StorageKey::installReported);
  context_->print(reported ? "ENTER OPEN ACTIVITY" : "ENTER INSTALL ACTIVITY");
  sendActivity(reported ? openCode : installCode, parameters);
}

std::optional<ActivityBody> ActivityEvents::body(std::int64_t code) {
  if (!context_->state.initialised || !context_->storage.flag(StorageKey::analytics)) return std::nullopt;
  auto session = readSessionValues(*context_);
  if (!session) return std::nullopt;
  ActivityBody body = reports_->activity(sessionBlock(*std::move(session)));
  body.code = code;
  return body;
}

void ActivityEvents::sendActivity(std::int64_t code, const Parameters& parameters) {
  const auto report = body(code);
  if (!report) return;
  if (code == installCode) {
    // What the server has accepted counts, even where another core has taken over meanwhile.
    requests_->sendActivityInstall(
        *report, [self = shared_from_this(), parameters](const VorselRequest::Response& response,
                                                         const std::optional<Error>& error) {
          self->installAnswered(response, error, parameters);
        });
  } else {
    requests_->sendActivityOpen(
        *report, [context = context_](const VorselRequest::Response&, const std::optional<Error>& error) {
          if (error) context->print("error from activity open");
        });
  }
}

void ActivityEvents::installAnswered(const VorselRequest::Response& response,
                                     const std::optional<Error>& error, const Parameters& parameters) {
  if (response && response->statusCode == httpCreated) {
    context_->storage.set(StorageKey::installReported, true);
    context_->storage.synchronize();
    context_->print("INSTALL SENT " + responseText(*response));
    sendActivity(openCode, parameters);
  } else if (error) {
    context_->print("error Install code");
  }
}

void ActivityEvents::sendCustomEvent(const std::string& key, const JSONAny& value) {
  auto encoded = value.encode();
  if (!encoded) fatalError("sendCustomEvent: the value of \"" + key + "\" has no JSON form");
  const JSONAny::Dictionary pair{{key, value}};
  if (const auto text = JSONAny(pair).encode(); !text) context_->print(text.error().description);
  auto session = readSessionValues(*context_);
  if (!session) fatalError("sendCustomEvent: no session was counted yet; call VorselKellp::initialize first");
  ActivityBody report = reports_->activity(sessionBlock(*std::move(session)));
  report.code = openCode;
  report.e.emplace().emplace(key, *std::move(encoded));
  requests_->sendActivityOpen(
      report, [context = context_](const VorselRequest::Response&, const std::optional<Error>& error) {
        if (error) context->print("error from custom event");
      });
}

void ActivityEvents::sendStatusEvent(std::int64_t code) {
  if (const auto report = body(code))
    requests_->sendActivityLocationEvent(*report,
                                         [](const VorselRequest::Response&, const std::optional<Error>&) {});
}

}  // namespace VorselKelp
