#include "brellixctl/fleet/ServerFence.h"

#include "brellixctl/ServerAddress.h"

namespace brellixctl {

void ServerFence::send(VorselKelp::platform::URLRequest request, Completion completion) {
  const std::string origin(originOf(request.url));
  if (!origin.empty() && origin != server_) {
    request.url.replace(0, origin.size(), server_);
    const std::lock_guard lock(mutex_);
    ++turned_[origin];
  }
  session_->send(std::move(request), std::move(completion));
}

ServerFence::Counts ServerFence::turned() const {
  const std::lock_guard lock(mutex_);
  return turned_;
}

}  // namespace brellixctl
