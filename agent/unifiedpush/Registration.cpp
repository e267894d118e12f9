#include "unifiedpush/Registration.h"

#include <algorithm>
#include <utility>

#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpWebPush/Endpoint.h"
#include "bus/Text.h"

namespace VorselKelp::agent {
namespace {

using Stage = Registration::Stage;
using Outcome = RegistrationAnswer::Outcome;

// Seconds between two tries where a distributor asks for patience.
constexpr double firstPause = 60;
constexpr double longestPause = 3600;

// Bytes. Reasons are a stranger's words.
constexpr std::size_t longestDescription = 100;
constexpr std::size_t longestReason = 512;

}  // namespace

Registration::Registration(Bus& bus, std::shared_ptr<platform::MainQueue> mainQueue,
                           RegistrationOptions options, std::function<void()> changed)
    : bus_(bus),
      mainQueue_(std::move(mainQueue)),
      options_(std::move(options)),
      changed_(std::move(changed)) {}

Registration::~Registration() = default;

Status Registration::begin(State& state, platform::UniqueFunction<void()> known) {
  if (const auto status = load(state); !status) return status;
  const auto weak = std::weak_ptr(alive_);
  bus_.watchOwners(distributorNames, true, [this, weak](const std::string& name, const std::string& owner) {
    if (!weak.expired()) ownerIs(name, owner);
  });
  if (record_.distributor().empty()) {
    goOn(std::move(known));
  } else {
    findOwner([this, known = std::move(known)]() mutable { goOn(std::move(known)); });
  }
  return Done{};
}

void Registration::goOn(platform::UniqueFunction<void()> known) {
  known_ = true;
  for (auto& work : std::exchange(early_, {})) work();
  known();
  if (record_.wanted() && !holds()) choose();
}

void Registration::findOwner(platform::UniqueFunction<void()> found) {
  bus_.findOwner(record_.distributor(),
                 [this, weak = std::weak_ptr(alive_), found = std::move(found)](std::string owner) mutable {
                   if (weak.expired()) return;
                   owner_ = std::move(owner);
                   found();
                 });
}

Status Registration::load(State& state) {
  const auto endpoint = record_.load(state);
  if (!endpoint) return endpoint.error();
  if (!record_.wanted()) return Done{};
  const auto& keys = record_.keys();
  const auto distributor = record_.token().empty() ? std::string() : record_.distributor();
  condition_ = {Stage::pending, "The distributor has not answered yet", {}, distributor};
  if (!endpoint->empty() && !keys.publicKey.empty())
    condition_ = {
        Stage::registered, {}, webpush::Subscription{*endpoint, keys.auth, keys.publicKey}, distributor};
  return Done{};
}

std::string Registration::session() const {
  return owner_.empty() ? std::string() : bus_.guid() + owner_;
}

bool Registration::holds() const {
  const bool right = options_.wanted.empty() ||
                     chooseDistributor({record_.distributor()}, options_.wanted) == record_.distributor();
  return right && condition_.stage == Stage::registered && record_.vapidKey() == options_.vapidKey &&
         !record_.registeredIn().empty() && record_.registeredIn() == session();
}

void Registration::settle(Condition condition) {
  condition.reason = shortText(condition.reason, longestReason);
  if (!record_.token().empty()) condition.distributor = record_.distributor();
  if (condition == condition_) return;
  condition_ = std::move(condition);
  changed_();
}

void Registration::fail(const Error& error) {
  posix::standardErrorLines()(error.description);
  settle({Stage::refused, error.description, {}});
}

void Registration::want() {
  if (const auto status = record_.want(); !status) return fail(status.error());
  if (holds()) return;
  if (condition_.stage != Stage::registered)
    settle({Stage::pending, "The distributor has not answered yet", {}});
  choose();
}

void Registration::leaveDistributor() {
  if (!record_.distributor().empty() && !record_.token().empty())
    unregisterFrom(bus_, record_.distributor(), record_.token());
}

void Registration::giveUp() {
  patience_.reset();
  leaveDistributor();
  asking_ = false;
  tell(record_.giveUp());
  settle({});
}

/// What was not written matters to the next agent alone.
void Registration::tell(const Status& written) {
  if (!written) posix::standardErrorLines()(written.error().description);
}

bool Registration::knows(const std::string& sender, const std::string& token) const {
  return !sender.empty() && sender == owner_ && !token.empty() && token == record_.token();
}

void Registration::ownerIs(const std::string& name, const std::string& owner) {
  if (name == record_.distributor()) {
    owner_ = owner;
    if (owner.empty()) return lost();
    patience_.reset();
    // A new one may have forgotten us.
    if (record_.wanted() && !asking_ && record_.registeredIn() != session())
      record_.token().empty() ? choose() : ask();
    return;
  }
  const bool named = !options_.wanted.empty() && chooseDistributor({name}, options_.wanted) == name;
  const bool needed = condition_.stage != Stage::refused && owner_.empty();
  if (record_.wanted() && !owner.empty() && (named || needed)) choose();
}

/// It is started where the bus can do that, else waited for from now on.
void Registration::lost() {
  // It may come back by the same connection without what it knew.
  if (!record_.registeredIn().empty()) tell(record_.noteSession({}));
  look([this](const std::vector<std::string>& there) {
    if (!record_.wanted() || condition_.stage != Stage::registered || !owner_.empty()) return;
    if (std::ranges::find(there, record_.distributor()) == there.end()) return awaitReturn(false);
    // What ends as soon as it has started is not started without a pause.
    pause_ == 0 ? choose() : askAgainLater();
    pause_ = std::max(pause_, firstPause);
  });
}

void Registration::choose(bool patient) {
  if (asking_) return;
  look([this, patient](const std::vector<std::string>& there) {
    if (record_.wanted() && !asking_) takeOf(there, patient);
  });
}

/// The agent stays until the bus has told which distributors there are.
void Registration::look(platform::UniqueFunction<void(const std::vector<std::string>& there)> found) {
  ++looking_;
  listDistributors(bus_, [this, weak = std::weak_ptr(alive_),
                          found = std::move(found)](const std::vector<std::string>& there) mutable {
    if (weak.expired()) return;
    --looking_;
    found(there);
  });
}

void Registration::takeOf(const std::vector<std::string>& there, bool patient) {
  const bool remains =
      options_.wanted.empty() && std::ranges::find(there, record_.distributor()) != there.end();
  const auto found = remains ? record_.distributor() : chooseDistributor(there, options_.wanted);
  const bool subscribed = condition_.stage == Stage::registered;
  if (!found.empty()) {
    const bool moves = subscribed && options_.wanted.empty() && found != record_.distributor();
    return moves && patient ? awaitReturn(true) : chosen(found);
  }
  if (subscribed) return;  // it comes back, and then hears of us
  settle({Stage::pending,
          options_.wanted.empty()
              ? std::string("No distributor of push messages is installed")
              : "The distributor of push messages \"" + options_.wanted + "\" is not there",
          {}});
}

/// Moving costs the subscription that senders have.
void Registration::awaitReturn(bool stay) {
  if (patience_) {
    *patience_ = *patience_ || stay;
    return;
  }
  patience_ = std::make_shared<bool>(stay);
  mainQueue_->asyncAfter(graceSeconds, [this, weak = std::weak_ptr(patience_)] {
    if (weak.expired()) return;
    patience_.reset();
    if (record_.wanted()) choose(false);
    changed_();
  });
}

void Registration::chosen(const std::string& distributor) {
  if (distributor != record_.distributor() || record_.vapidKey() != options_.vapidKey ||
      record_.token().empty()) {
    leaveDistributor();
    renew(distributor);
  }
  if (record_.token().empty()) return;
  asking_ = true;
  // The endpoint comes before the answer, and from nobody else.
  findOwner([this, token = record_.token()] {
    if (token == record_.token()) ask();
  });
}

void Registration::renew(const std::string& distributor) {
  if (const auto status = record_.renew(distributor, options_.vapidKey); !status) return fail(status.error());
  settle({Stage::pending, "The distributor has not answered yet", {}});
}

void Registration::ask() {
  asking_ = true;
  registerWith(
      bus_,
      {record_.distributor(), options_.service, record_.token(),
       shortText(options_.description, longestDescription), options_.vapidKey},
      [this, weak = std::weak_ptr(alive_), token = record_.token()](const RegistrationAnswer& answer) {
        if (weak.expired() || token != record_.token()) return;
        asking_ = false;
        answered(answer);
        if (condition_.stage == Stage::registered) changed_();
      });
}

void Registration::answered(const RegistrationAnswer& answer) {
  switch (answer.outcome) {
    case Outcome::accepted:
      tell(record_.noteSession(session()));
      return noteStay();
    case Outcome::refused:
      return settle({Stage::refused, "The distributor refuses: " + answer.reason, {}});
    case Outcome::absent:
    case Outcome::later:
      if (condition_.stage != Stage::registered)
        settle({Stage::pending, "The distributor can't register yet: " + answer.reason, {}});
      askAgainLater();
  }
}

/// One that has stayed for a while is asked, or started, without a pause the next time.
void Registration::noteStay() {
  mainQueue_->asyncAfter(firstPause, [this, weak = std::weak_ptr(alive_), session = record_.registeredIn()] {
    if (!weak.expired() && record_.registeredIn() == session) pause_ = 0;
  });
}

void Registration::askAgainLater() {
  pause_ = pause_ == 0 ? firstPause : std::min(2 * pause_, longestPause);
  mainQueue_->asyncAfter(pause_, [this, weak = std::weak_ptr(alive_)] {
    if (!weak.expired() && record_.wanted()) choose();
  });
}

void Registration::whenKnown(platform::UniqueFunction<void()> work) {
  if (known_) return work();
  early_.push_back(std::move(work));
}

void Registration::newEndpoint(const std::string& sender, const std::string& token,
                               const std::string& endpoint) {
  if (!knows(sender, token)) return posix::standardErrorLines()("An endpoint came from a stranger");
  if (!endpoint.empty()) {
    if (const auto parsed = webpush::parseEndpoint(endpoint); !parsed)
      return posix::standardErrorLines()("The distributor's endpoint is of no use: " +
                                         parsed.error().description);
  }
  if (const auto status = record_.noteEndpoint(endpoint); !status) return fail(status.error());
  if (endpoint.empty()) return settle({Stage::pending, "The distributor changes its provider", {}});
  settle({Stage::registered,
          {},
          webpush::Subscription{endpoint, record_.keys().auth, record_.keys().publicKey}});
}

void Registration::unregistered(const std::string& sender, const std::string& token) {
  // Without a token it may still confirm that an earlier one was removed.
  const bool ours = token.empty() ? !record_.registeredIn().empty() : token == record_.token();
  if (sender.empty() || sender != owner_ || !ours || record_.token().empty()) return;
  // Whoever was asked about it may answer later, or never.
  asking_ = false;
  tell(record_.forget());
  if (!record_.wanted()) return;
  settle({Stage::pending, "The distributor has ended the registration", {}});
  askAgainLater();
}

}  // namespace VorselKelp::agent
