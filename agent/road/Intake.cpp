#include "road/Intake.h"

#include <utility>

#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpWebPush/Message.h"
#include "glib/Pointers.h"
#include "road/Clear.h"

namespace VorselKelp::agent {
namespace {

// Seconds.
constexpr double writePatience = 20;
constexpr double writePause = 1;

constexpr std::size_t mostHeld = 10'000;

/// That which its distributor gave the message, else its bytes'. They look alike and never meet.
std::string nameOf(const std::string& id, const std::string& bytes) {
  // In clear two that are alike are two; encrypted they differ.
  if (id.empty() && isInClear(bytes))
    return "clear-" + std::string(freedesktop::TextPtr(g_uuid_string_random()).get());
  const auto& named = id.empty() ? bytes : id;
  const freedesktop::TextPtr sum(g_compute_checksum_for_data(
      G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(named.data()), named.size()));
  return (id.empty() ? "bytes-" : "id-") + std::string(sum.get()).substr(0, 32);
}

}  // namespace

Intake::Intake(StateThread& state, const Registration& registration,
               std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<platform::Clock> clock,
               std::function<void(std::optional<std::int64_t>)> ended)
    : state_(state),
      registration_(registration),
      mainQueue_(std::move(mainQueue)),
      clock_(std::move(clock)),
      ended_(std::move(ended)) {}

void Intake::take(const std::string& sender, const std::string& token, std::string bytes,
                  const std::string& id, ConnectorEvents::Acknowledge acknowledge) {
  if (bytes.size() > webpush::mostEncrypted) {
    // Refused it would come back for ever.
    posix::standardErrorLines()("A message of " + std::to_string(bytes.size()) +
                                " bytes is too long, and is dropped");
    return acknowledge(Done{});
  }
  if (held_ == mostHeld) return acknowledge(Error{"Too many messages come at once"});
  ++held_;
  auto name = nameOf(id, bytes);
  Arrival arrival{sender, token, {std::move(name), std::move(bytes)}, clock_->now(), std::move(acknowledge)};
  if (!begun_) return early_.push_back(std::move(arrival));
  judge(std::move(arrival));
}

void Intake::begin() {
  begun_ = true;
  for (auto& arrival : std::exchange(early_, {})) judge(std::move(arrival));
}

void Intake::judge(Arrival arrival) {
  if (!registration_.knows(arrival.sender, arrival.token)) {
    posix::standardErrorLines()("A message came from a stranger");
    return answer(arrival, Error{"Nobody is registered here under this token"});
  }
  keep(std::make_shared<Arrival>(std::move(arrival)));
}

void Intake::keep(std::shared_ptr<Arrival> arrival) {
  state_.keep(arrival->message, clock_->now(),
              [self = shared_from_this(), arrival](Result<std::optional<std::int64_t>> serial) {
                if (serial) {
                  self->answer(*arrival, Done{}, *serial);
                  return;
                }
                if (self->clock_->now() - arrival->time >= writePatience) {
                  posix::standardErrorLines()(serial.error().description);
                  return self->answer(*arrival, serial.error());
                }
                self->mainQueue_->asyncAfter(writePause, [self, arrival] { self->keep(arrival); });
              });
}

void Intake::answer(Arrival& arrival, const Status& status, std::optional<std::int64_t> serial) {
  --held_;
  arrival.acknowledge(status);
  ended_(serial);
}

}  // namespace VorselKelp::agent
