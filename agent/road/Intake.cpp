#include "road/Intake.h"

#include <utility>

#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpWebPush/Message.h"
#include "glib/Pointers.h"

namespace VorselKelp::agent {
namespace {

// Seconds.
constexpr double writePatience = 20;
constexpr double writePause = 1;

/// That which its distributor gave the message, else its bytes'. Both look alike and never meet.
std::string nameOf(const std::string& id, const std::string& bytes) {
  const auto& named = id.empty() ? bytes : id;
  const freedesktop::TextPtr sum(g_compute_checksum_for_data(
      G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(named.data()), named.size()));
  return (id.empty() ? "bytes-" : "id-") + std::string(sum.get()).substr(0, 32);
}

}  // namespace

Intake::Intake(StateThread& state, const Registration& registration,
               std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<platform::Clock> clock,
               std::function<void(std::int64_t)> kept)
    : state_(state),
      registration_(registration),
      mainQueue_(std::move(mainQueue)),
      clock_(std::move(clock)),
      kept_(std::move(kept)) {}

void Intake::take(const std::string& sender, const std::string& token, std::string bytes,
                  const std::string& id, ConnectorEvents::Acknowledge acknowledge) {
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
  if (arrival.message.bytes.size() > webpush::mostEncrypted) {
    // Refused it would come back for ever.
    posix::standardErrorLines()("A message of " + std::to_string(arrival.message.bytes.size()) +
                                " bytes is too long, and is dropped");
    return answer(arrival, Done{});
  }
  keep(std::make_shared<Arrival>(std::move(arrival)));
}

void Intake::keep(std::shared_ptr<Arrival> arrival) {
  state_.keep(arrival->message, clock_->now(),
              [self = shared_from_this(), arrival](Result<std::optional<std::int64_t>> serial) {
                if (serial) {
                  self->answer(*arrival, Done{});
                  if (*serial) self->kept_(**serial);
                  return;
                }
                if (self->clock_->now() - arrival->time >= writePatience) {
                  posix::standardErrorLines()(serial.error().description);
                  return self->answer(*arrival, serial.error());
                }
                self->mainQueue_->asyncAfter(writePause, [self, arrival] { self->keep(arrival); });
              });
}

void Intake::answer(Arrival& arrival, const Status& status) {
  --held_;
  arrival.acknowledge(status);
}

}  // namespace VorselKelp::agent
