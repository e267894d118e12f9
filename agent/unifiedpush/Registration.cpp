#include "unifiedpush/Registration.h"

#include <algorithm>
#include <ctime>
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

double now() {
  return static_cast<double>(std::time(nullptr));
}

std::string newToken() {
  return freedesktop::TextPtr(g_uuid_string_random()).get();
}

}  // namespace

Registration::Registration(Bus& bus, std::shared_ptr<platform::MainQueue> mainQueue,
                           RegistrationOptions options, std::function<void()> changed)
    : bus_(bus),
      mainQueue_(std::move(mainQueue)),
      options_(std::move(options)),
      changed_(std::move(changed)) {}

Registration::~Registration() = default;

Status Registration::begin(State& state, platform::UniqueFunction<void()> known) {
  state_ = &state;
  if (const auto status = load(); !status) return status;
  const auto weak = std::weak_ptr(alive_);
  bus_.watchOwners(distributorNames, true, [this, weak](const std::string& name, const std::string& owner) {
    if (!weak.expired()) ownerIs(name, owner);
  });
  if (distributor_.empty()) {
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
  if (wanted_ && !holds()) choose();
}

void Registration::findOwner(platform::UniqueFunction<void()> found) {
  bus_.findOwner(distributor_,
                 [this, weak = std::weak_ptr(alive_), found = std::move(found)](std::string owner) mutable {
                   if (weak.expired()) return;
                   owner_ = std::move(owner);
                   found();
                 });
}

Status Registration::load() {
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
  const auto endpoint = read("endpoint");
  const auto keys = state_->keys(now());
  if (!keys) return keys.error();
  if (!keys->empty()) keys_ = keys->front();
  if (!status || !wanted_) return status;
  const auto distributor = token_.empty() ? std::string() : distributor_;
  condition_ = {Stage::pending, "The distributor has not answered yet", {}, distributor};
  if (!endpoint.empty() && !keys_.publicKey.empty())
    condition_ = {
        Stage::registered, {}, webpush::Subscription{endpoint, keys_.auth, keys_.publicKey}, distributor};
  return status;
}

std::string Registration::session() const {
  return owner_.empty() ? std::string() : bus_.guid() + owner_;
}

bool Registration::holds() const {
  const bool right =
      options_.wanted.empty() || chooseDistributor({distributor_}, options_.wanted) == distributor_;
  return right && condition_.stage == Stage::registered && vapidKey_ == options_.vapidKey &&
         !registeredIn_.empty() && registeredIn_ == session();
}

void Registration::settle(Condition condition) {
  condition.reason = shortText(condition.reason, longestReason);
  if (!token_.empty()) condition.distributor = distributor_;
  if (condition == condition_) return;
  condition_ = std::move(condition);
  changed_();
}

void Registration::fail(const Error& error) {
  posix::standardErrorLines()(error.description);
  settle({Stage::refused, error.description, {}});
}

void Registration::want() {
  if (const auto status = state_->set({{"wanted", "yes"}}); !status) return fail(status.error());
  wanted_ = true;
  if (holds()) return;
  if (condition_.stage != Stage::registered)
    settle({Stage::pending, "The distributor has not answered yet", {}});
  choose();
}

void Registration::giveUp() {
  wanted_ = false;
  patience_.reset();
  if (!distributor_.empty() && !token_.empty()) unregisterFrom(bus_, distributor_, token_);
  forgetToken();
  const auto status =
      state_->set({{"wanted", {}}, {"token", {}}, {"endpoint", {}}, {"registeredIn", {}}, {"vapidKey", {}}});
  if (!status) posix::standardErrorLines()(status.error().description);
  settle({});
}

/// It may come back by the same connection without what it knew.
void Registration::forgetSession() {
  if (std::exchange(registeredIn_, {}).empty()) return;
  if (const auto status = state_->set({{"registeredIn", {}}}); !status)
    posix::standardErrorLines()(status.error().description);
}

/// Whoever was asked about it may answer later, or never.
void Registration::forgetToken() {
  token_.clear();
  registeredIn_.clear();
  asking_ = false;
}

bool Registration::knows(const std::string& sender, const std::string& token) const {
  return !sender.empty() && sender == owner_ && !token.empty() && token == token_;
}

void Registration::ownerIs(const std::string& name, const std::string& owner) {
  if (name == distributor_) {
    owner_ = owner;
    if (owner.empty()) return lost();
    patience_.reset();
    // A new one may have forgotten us.
    if (wanted_ && !asking_ && registeredIn_ != session()) token_.empty() ? choose() : ask();
    return;
  }
  const bool named = !options_.wanted.empty() && chooseDistributor({name}, options_.wanted) == name;
  const bool needed = condition_.stage != Stage::refused && owner_.empty();
  if (wanted_ && !owner.empty() && (named || needed)) choose();
}

/// It is started where the bus can do that, else waited for from now on.
void Registration::lost() {
  forgetSession();
  listDistributors(bus_, [this, weak = std::weak_ptr(alive_)](const std::vector<std::string>& there) {
    if (weak.expired() || !wanted_ || condition_.stage != Stage::registered || !owner_.empty()) return;
    if (std::ranges::find(there, distributor_) == there.end()) return awaitReturn(false);
    // What ends as soon as it has started is not started without a pause.
    pause_ == 0 ? choose() : askAgainLater();
    pause_ = std::max(pause_, firstPause);
  });
}

void Registration::choose(bool patient) {
  if (asking_) return;
  listDistributors(bus_,
                   [this, patient, weak = std::weak_ptr(alive_)](const std::vector<std::string>& there) {
                     if (!weak.expired() && wanted_ && !asking_) takeOf(there, patient);
                   });
}

void Registration::takeOf(const std::vector<std::string>& there, bool patient) {
  const bool remains = options_.wanted.empty() && std::ranges::find(there, distributor_) != there.end();
  const auto found = remains ? distributor_ : chooseDistributor(there, options_.wanted);
  const bool subscribed = condition_.stage == Stage::registered;
  if (!found.empty()) {
    const bool moves = subscribed && options_.wanted.empty() && found != distributor_;
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
    if (wanted_) choose(false);
    changed_();
  });
}

void Registration::chosen(const std::string& distributor) {
  if (distributor != distributor_ || vapidKey_ != options_.vapidKey || token_.empty()) {
    if (!distributor_.empty() && !token_.empty()) unregisterFrom(bus_, distributor_, token_);
    distributor_ = distributor;
    renew();
  }
  if (token_.empty()) return;
  asking_ = true;
  // The endpoint comes before the answer, and from nobody else.
  findOwner([this, token = token_] {
    if (token == token_) ask();
  });
}

/// Another distributor or another sender begins with another token and other keys.
void Registration::renew() {
  token_.clear();
  auto keys = webpush::makeReceiverKeys();
  if (!keys) return fail(keys.error());
  if (const auto status = state_->addKeys(*keys, now()); !status) return fail(status.error());
  keys_ = *std::move(keys);
  const auto token = newToken();
  const auto status = state_->set({{"distributor", distributor_},
                                   {"token", token},
                                   {"vapidKey", options_.vapidKey},
                                   {"endpoint", {}},
                                   {"registeredIn", {}}});
  if (!status) return fail(status.error());
  token_ = token;
  vapidKey_ = options_.vapidKey;
  registeredIn_.clear();
  settle({Stage::pending, "The distributor has not answered yet", {}});
}

void Registration::ask() {
  asking_ = true;
  registerWith(bus_,
               {distributor_, options_.service, token_, shortText(options_.description, longestDescription),
                options_.vapidKey},
               [this, weak = std::weak_ptr(alive_), token = token_](const RegistrationAnswer& answer) {
                 if (weak.expired() || token != token_) return;
                 asking_ = false;
                 answered(answer);
                 if (condition_.stage == Stage::registered) changed_();
               });
}

void Registration::answered(const RegistrationAnswer& answer) {
  switch (answer.outcome) {
    case Outcome::accepted:
      registeredIn_ = session();
      if (const auto status = state_->set({{"registeredIn", registeredIn_}}); !status)
        posix::standardErrorLines()(status.error().description);
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
  mainQueue_->asyncAfter(firstPause, [this, weak = std::weak_ptr(alive_), session = registeredIn_] {
    if (!weak.expired() && registeredIn_ == session) pause_ = 0;
  });
}

void Registration::askAgainLater() {
  pause_ = pause_ == 0 ? firstPause : std::min(2 * pause_, longestPause);
  mainQueue_->asyncAfter(pause_, [this, weak = std::weak_ptr(alive_)] {
    if (!weak.expired() && wanted_) choose();
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
  const auto status = state_->set({{"endpoint", endpoint.empty() ? std::nullopt : std::optional(endpoint)}});
  if (!status) return fail(status.error());
  if (endpoint.empty()) return settle({Stage::pending, "The distributor changes its provider", {}});
  settle({Stage::registered, {}, webpush::Subscription{endpoint, keys_.auth, keys_.publicKey}});
}

void Registration::unregistered(const std::string& sender, const std::string& token) {
  // Without a token it may still confirm that an earlier one was removed.
  const bool ours = token.empty() ? !registeredIn_.empty() : token == token_;
  if (sender.empty() || sender != owner_ || !ours || token_.empty()) return;
  forgetToken();
  const auto status = state_->set({{"token", {}}, {"endpoint", {}}, {"registeredIn", {}}});
  if (!status) posix::standardErrorLines()(status.error().description);
  if (!wanted_) return;
  settle({Stage::pending, "The distributor has ended the registration", {}});
  askAgainLater();
}

}  // namespace VorselKelp::agent
