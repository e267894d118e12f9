#include "VorselKelpSystem/EventChannel.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "VorselKelpPosix/DescriptorWriter.h"
#include "VorselKelpPosix/Services.h"
#include "VorselKelpSystem/NotificationRecords.h"

namespace VorselKelp::system {
namespace {

class ChannelConsole final : public platform::Console {
 public:
  explicit ChannelConsole(std::shared_ptr<EventChannel> channel) : channel_(std::move(channel)) {}
  void print(std::string_view text) override { channel_->send("console", std::string(text)); }

 private:
  std::shared_ptr<EventChannel> channel_;
};

}  // namespace

EventChannel::EventChannel(std::optional<int> descriptor) : descriptor_(descriptor) {
  if (!descriptor_) return;
  ::fcntl(*descriptor_, F_SETFD, FD_CLOEXEC);
  // Whoever listened may be gone; the process goes on to its own end.
  ::signal(SIGPIPE, SIG_IGN);
}

void EventChannel::send(std::string_view event, JSONAny value) {
  if (!descriptor_) return;
  const auto line = encodeLossy(JSONAny::Dictionary{{std::string(event), std::move(value)}}) + '\n';
  const std::lock_guard lock(mutex_);
  posix::writeAll(*descriptor_, line);
}

std::shared_ptr<platform::Console> makeChannelConsole(std::shared_ptr<EventChannel> channel) {
  if (!channel->connected()) return posix::makeConsole(STDOUT_FILENO);
  return std::make_shared<ChannelConsole>(std::move(channel));
}

}  // namespace VorselKelp::system
