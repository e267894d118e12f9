#include "gateway/desktop/Desktops.h"

#include <chrono>
#include <utility>

#include "VorselKelpPosix/CurlURLSession.h"
#include "gateway/desktop/Addresses.h"
#include "gateway/desktop/PushAnswer.h"
#include "gateway/desktop/PushRequest.h"

namespace gateway {
namespace {

namespace platform = VorselKelp::platform;

constexpr std::size_t longestAnswer = std::size_t{16} << 10;  // bytes
constexpr unsigned connectionsToServer = 6;
constexpr std::size_t phoneToken = 32;  // bytes

VorselKelp::posix::URLSessionOptions sessionOptions(const DesktopOptions& options) {
  VorselKelp::posix::URLSessionOptions session;
  session.certificateFile = options.authorities;
  session.followRedirects = false;
  session.mayConnect = [loopback = options.loopback](const sockaddr& address) {
    return isPublic(address) || (loopback && isLoopback(address));
  };
  session.longestRequest = options.patience;
  session.connectionsToServer = connectionsToServer;
  session.requestsAtOnce = options.mostUnderWay;
  return session;
}

std::int64_t secondsNow() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::seconds>(now).count();
}

}  // namespace

Desktops::Desktops(DesktopOptions options)
    : options_(std::move(options)), sessions_(sessionOptions(options_)) {
  if (options_.sender) authorizations_.emplace(*options_.sender);
}

/// The rest is looked at where there is time for it. A phone's token can begin with any byte.
bool Desktops::takes(std::string_view device) const {
  return device.size() > phoneToken && device.starts_with('{');
}

void Desktops::deliver(Notification notification, Answered answered) {
  if (!begin()) return answered({503, "ServiceUnavailable"});
  encryption_.post([this, notification = std::move(notification), answered = std::move(answered)]() mutable {
    send(notification, std::move(answered));
  });
}

void Desktops::send(const Notification& notification, Answered answered) {
  auto made = makePushRequest(notification, secondsNow(), authorizations_ ? &*authorizations_ : nullptr,
                              options_.loopback);
  auto* push = std::get_if<PushRequest>(&made);
  if (push == nullptr || !beginFor(push->origin)) {
    end();
    return answered(push == nullptr ? std::get<Answer>(made) : Answer{429, "TooManyRequests"});
  }
  push->request.timeout = options_.patience;
  push->request.responseLimit = longestAnswer;
  push->request.discardBody = true;
  sessions_.send(std::move(push->request),
                 [this, origin = std::move(push->origin),
                  answered = std::move(answered)](const platform::URLResult& result) mutable {
                   endFor(origin);
                   end();
                   answered(answerOf(result));
                 });
}

bool Desktops::begin() {
  const std::lock_guard lock(mutex_);
  if (underWay_ >= options_.mostUnderWay) return false;
  ++underWay_;
  return true;
}

bool Desktops::beginFor(const std::string& origin) {
  const std::lock_guard lock(mutex_);
  auto& count = underWayFor_[origin];
  if (count >= options_.mostForOne) return false;
  ++count;
  return true;
}

void Desktops::end() {
  const std::lock_guard lock(mutex_);
  --underWay_;
}

void Desktops::endFor(const std::string& origin) {
  const std::lock_guard lock(mutex_);
  const auto found = underWayFor_.find(origin);
  if (--found->second == 0) underWayFor_.erase(found);
}

}  // namespace gateway
