#include "brellixctl/fleet/CampaignWatch.h"

#include <algorithm>
#include <utility>

namespace brellixctl {

namespace platform = VorselKelp::platform;

namespace {

using Time = CampaignWatch::Clock::time_point;

double secondsBetween(Time from, Time to) {
  return std::chrono::duration<double>(to - from).count();
}

class TrackerSession final : public platform::URLSession {
 public:
  TrackerSession(std::shared_ptr<URLSession> session, std::shared_ptr<const IncomingPayload> payload,
                 std::shared_ptr<CampaignWatch> watch, Time arrival)
      : session_(std::move(session)),
        payload_(std::move(payload)),
        watch_(std::move(watch)),
        arrival_(arrival) {}

  void send(platform::URLRequest request, Completion completion) override {
    if (!isTracker(request.url)) return session_->send(std::move(request), std::move(completion));
    session_->send(std::move(request),
                   [watch = watch_, arrival = arrival_,
                    completion = std::move(completion)](platform::URLResult result) mutable {
                     if (result.response && result.response->statusCode < 400) watch->tracked(arrival);
                     completion(std::move(result));
                   });
  }

 private:
  [[nodiscard]] bool isTracker(const std::string& url) const {
    const auto& kinds = payload_->campaign->kinds();
    const auto kind = kinds.find(url);
    return kind != kinds.end() && (kind->second == "view tracker" || kind->second == "impression tracker");
  }

  const std::shared_ptr<URLSession> session_;
  const std::shared_ptr<const IncomingPayload> payload_;
  const std::shared_ptr<CampaignWatch> watch_;
  const Time arrival_;
};

}  // namespace

void CampaignWatch::arrived(Time time) {
  const std::lock_guard lock(mutex_);
  first_ = std::min(first_, time);
  last_ = std::max(last_, time);
  latencies_["arrival"].push_back(static_cast<float>(secondsBetween(first_, time) * 1000));
}

void CampaignWatch::shown(Time arrival) {
  note("delivery", arrival);
}

void CampaignWatch::tracked(Time arrival) {
  note("tracker", arrival);
}

void CampaignWatch::note(const char* name, Time since) {
  const auto now = Clock::now();
  const std::lock_guard lock(mutex_);
  last_ = std::max(last_, now);
  latencies_[name].push_back(static_cast<float>(secondsBetween(since, now) * 1000));
}

double CampaignWatch::secondsSinceFirst() const {
  const std::lock_guard lock(mutex_);
  return first_ == Time::max() ? 0 : secondsBetween(first_, Clock::now());
}

double CampaignWatch::secondsToLast() const {
  const std::lock_guard lock(mutex_);
  return first_ == Time::max() ? 0 : secondsBetween(first_, last_);
}

CampaignWatch::Latencies CampaignWatch::latencies() const {
  const std::lock_guard lock(mutex_);
  return latencies_;
}

std::shared_ptr<platform::URLSession> watchTrackers(std::shared_ptr<platform::URLSession> session,
                                                    std::shared_ptr<const IncomingPayload> payload,
                                                    std::shared_ptr<CampaignWatch> watch, Time arrival) {
  return std::make_shared<TrackerSession>(std::move(session), std::move(payload), std::move(watch), arrival);
}

}  // namespace brellixctl
