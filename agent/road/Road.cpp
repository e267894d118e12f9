#include "road/Road.h"

#include <utility>
#include <vector>

#include "VorselKelpPosix/LineSink.h"
#include "road/Reading.h"

namespace VorselKelp::agent {
namespace {

/// Enough that no extension waits for the bus.
constexpr std::size_t atOnce = 8;
constexpr double showPause = 60;  // seconds

bool mayNotify(platform::AuthorizationStatus status) {
  return status != platform::AuthorizationStatus::notDetermined &&
         status != platform::AuthorizationStatus::denied;
}

}  // namespace

Road::Road(RoadParts parts, RoadOptions options) : parts_(std::move(parts)), options_(options) {}

void Road::add(std::int64_t serial) {
  waiting_.push_back(serial);
  go();
}

void Road::go() {
  if (std::exchange(going_, true)) return;  // thousands may leave at their very beginning
  while (!standing_ && underWay_ < atOnce && !waiting_.empty()) {
    const auto serial = waiting_.front();
    waiting_.pop_front();
    ++underWay_;
    begin(serial);
  }
  going_ = false;
}

void Road::begin(std::int64_t serial) {
  auto message = parts_.state->state().message(serial);
  if (!message) return later(serial, message.error());
  if (!*message) return leave();
  const auto keys = parts_.state->state().keys(parts_.clock->now());
  if (!keys) return later(serial, keys.error());
  auto push = readMessage(**message, *keys, options_.plaintext, parts_.clock->now());
  if (!push) return drop(serial, push.error().description);
  if (!*push) return leave(serial);
  system::PushAnswers answers;
  answers.result = [weak = weak_from_this(), serial,
                    payload = (*push)->payload](Result<system::PushResult> result) {
    const auto self = weak.lock();
    if (!self) return;
    if (!result) return self->drop(serial, result.error().description);
    self->changed(serial, payload, *std::move(result));
  };
  answers.ended = [](const system::ExtensionReport& report) {
    if (report.notStarted) posix::standardErrorLines()(report.notStarted->description);
    for (const auto& line : report.outcome.errorLines) posix::standardErrorLines()(line);
    if (report.outcome.stopReason)
      posix::standardErrorLines()("The service extension: " + *report.outcome.stopReason);
  };
  parts_.delivery->deliver(**std::move(push), std::move(answers));
}

void Road::changed(std::int64_t serial, const std::string& payload, system::PushResult result) {
  if (result.kind == RemoteKind::silent) return hand({serial, payload});
  show(serial, std::move(result.request));
}

void Road::show(std::int64_t serial, platform::NotificationRequest request) {
  parts_.center->deliver(
      request, [weak = weak_from_this(), serial, request, tries = tries_](const Status& shown) mutable {
        const auto self = weak.lock();
        if (!self) return;
        // Somebody else has come to show it, before the one who was asked had refused.
        if (!shown && tries != self->tries_) return self->show(serial, std::move(request));
        // What the user forbids waits for nobody.
        if (!shown && mayNotify(self->parts_.store->authorization()))
          return self->refused(serial, std::move(request), shown.error());
        self->dropReplaced(serial, request.identifier);
        self->leave(serial);
      });
}

void Road::refused(std::int64_t serial, platform::NotificationRequest request, const Error& reason) {
  dropReplaced(serial, request.identifier);
  unshown_.emplace(serial, std::move(request));
  stand(reason);
}

/// An earlier one of its collapse key that waits would take its place.
void Road::dropReplaced(std::int64_t serial, const std::string& identifier) {
  std::vector<std::int64_t> replaced;
  std::erase_if(unshown_, [&](const auto& waiting) {
    const bool older = waiting.first < serial && waiting.second.identifier == identifier;
    if (older) replaced.push_back(waiting.first);
    return older;
  });
  for (const auto each : replaced) leave(each);
}

/// What can't be read now is not lost for that.
void Road::later(std::int64_t serial, const Error& reason) {
  waiting_.push_front(serial);
  --underWay_;
  stand(reason);
}

void Road::stand(const Error& reason) {
  if (std::exchange(standing_, true)) return;
  posix::standardErrorLines()("Notifications wait to be shown: " + reason.description);
  parts_.mainQueue->asyncAfter(showPause, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->tryAgain();
  });
}

void Road::tryAgain() {
  ++tries_;
  if (!std::exchange(standing_, false)) return;
  for (auto& [serial, request] : std::exchange(unshown_, {})) show(serial, std::move(request));
  go();
}

void Road::hand(Silent silent) {
  if (!silent_.empty()) {
    // It did not start for the one before.
    silent_.push_back(std::move(silent));
    return leave();
  }
  parts_.application->push(silent.payload, [weak = weak_from_this(), silent](const Status& reached) mutable {
    const auto self = weak.lock();
    if (!self) return;
    if (reached) return self->leave(silent.serial);
    posix::standardErrorLines()("A silent notification waits for the application: " +
                                reached.error().description);
    self->silent_.push_back(std::move(silent));
    self->leave();
  });
}

void Road::applicationRuns() {
  for (auto& silent : std::exchange(silent_, {})) {
    ++underWay_;
    hand(std::move(silent));
  }
}

void Road::drop(std::int64_t serial, const std::string& reason) {
  posix::standardErrorLines()("A message is dropped: " + reason);
  leave(serial);
}

/// Nothing is left to be done with it.
void Road::leave(std::int64_t serial) {
  parts_.state->drop(serial);
  leave();
}

void Road::leave() {
  --underWay_;
  go();
  parts_.ended();
}

}  // namespace VorselKelp::agent
