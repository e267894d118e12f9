#include "gateway/http2/Loop.h"

#include <signal.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "VorselKelpPosix/FileIO.h"

namespace gateway {

using VorselKelp::Done;
using VorselKelp::Result;
using VorselKelp::Status;
using VorselKelp::posix::systemError;

namespace {

/// A connection that breaks while it is written to is an error then, and not the end of the process.
void blockBrokenPipes() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

}  // namespace

Result<std::shared_ptr<Loop>> Loop::make() {
  const int poll = ::epoll_create1(EPOLL_CLOEXEC);
  if (poll < 0) return systemError("epoll");
  const int bell = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (bell < 0) {
    auto error = systemError("eventfd");
    ::close(poll);
    return error;
  }
  auto loop = std::make_shared<Loop>(poll, bell);
  epoll_event event{EPOLLIN, {nullptr}};
  if (::epoll_ctl(poll, EPOLL_CTL_ADD, bell, &event) != 0) return systemError("epoll");
  return loop;
}

Loop::Loop(int poll, int bell) : poll_(poll), bell_(bell) {}

Status Loop::watch(int descriptor, std::uint32_t events, Source& source) {
  epoll_event event{events, {&source}};
  if (::epoll_ctl(poll_.number(), EPOLL_CTL_MOD, descriptor, &event) == 0) return Done{};
  if (errno == ENOENT && ::epoll_ctl(poll_.number(), EPOLL_CTL_ADD, descriptor, &event) == 0) return Done{};
  return systemError("epoll");
}

void Loop::forget(int descriptor, Source& source) {
  ::epoll_ctl(poll_.number(), EPOLL_CTL_DEL, descriptor, nullptr);
  gone_.push_back(&source);
}

void Loop::post(Work work) {
  bool first = false;
  {
    const std::lock_guard lock(mutex_);
    first = posted_.empty();
    posted_.push_back(std::move(work));
  }
  if (first) wake();
}

void Loop::wake() {
  ::eventfd_write(bell_.number(), 1);
}

void Loop::run(const std::function<void()>& between, const std::function<void()>& everySecond) {
  constexpr auto second = std::chrono::seconds(1);
  blockBrokenPipes();
  thread_ = std::this_thread::get_id();
  auto next = Clock::now() + second;
  while (!stopped_) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count();
    wait(static_cast<int>(std::max<std::int64_t>(left, 0)));
    work();
    if (Clock::now() >= next) {
      next = Clock::now() + second;
      everySecond();
    }
    between();
  }
}

void Loop::wait(int milliseconds) {
  std::array<epoll_event, 256> events;
  gone_.clear();
  const int count =
      ::epoll_wait(poll_.number(), events.data(), static_cast<int>(events.size()), milliseconds);
  for (int i = 0; i < count; ++i) {
    const auto& event = events[static_cast<std::size_t>(i)];
    if (!event.data.ptr) {
      std::uint64_t rung = 0;
      ::eventfd_read(bell_.number(), &rung);
      continue;
    }
    auto* source = static_cast<Source*>(event.data.ptr);
    if (std::ranges::find(gone_, source) == gone_.end()) source->ready(event.events);
  }
}

void Loop::work() {
  std::vector<Work> taken;
  {
    const std::lock_guard lock(mutex_);
    taken.swap(posted_);
  }
  for (auto& one : taken) one();
}

}  // namespace gateway
