#include "gateway/desktop/Sessions.h"

#include <utility>

namespace gateway {
namespace {

constexpr std::size_t mostRequests = 900;

}  // namespace

void Sessions::send(VorselKelp::platform::URLRequest request,
                    VorselKelp::platform::URLSession::Completion completion) {
  if (sessions_.empty() || sessions_.back().begun == mostRequests) renew();
  auto& session = sessions_.back();
  ++session.begun;
  ++session.underWay;
  session.requests->send(std::move(request), [&session, completion = std::move(completion)](
                                                 VorselKelp::platform::URLResult result) mutable {
    --session.underWay;
    completion(std::move(result));
  });
}

/// A session that is let go waits for the completions that run.
void Sessions::renew() {
  std::erase_if(sessions_, [](const Session& session) { return session.underWay == 0; });
  sessions_.emplace_back().requests = VorselKelp::posix::makeURLSession(options_);
}

}  // namespace gateway
