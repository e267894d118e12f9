#include "Listener.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

namespace {

/// For the calling thread and all that come of it. Returns the descriptor of those who decide, or -1.
int installFilter(std::span<const int> numbers) {
  std::vector<sock_filter> program{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const auto toNotify = static_cast<std::uint8_t>(numbers.size() - i);
    program.push_back(
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(numbers[i]), toNotify, 0));
  }
  program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
  sock_fprog whole{static_cast<unsigned short>(program.size()), program.data()};
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return -1;
  return static_cast<int>(
      ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &whole));
}

struct DescriptorMessage {
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))]{};
  char byte = 0;
  iovec data{&byte, 1};
  msghdr header{};
  DescriptorMessage() {
    header.msg_iov = &data;
    header.msg_iovlen = 1;
    header.msg_control = control;
    header.msg_controllen = sizeof control;
  }
};

bool sendDescriptor(int socket, int descriptor) {
  DescriptorMessage message;
  auto* part = CMSG_FIRSTHDR(&message.header);
  part->cmsg_level = SOL_SOCKET;
  part->cmsg_type = SCM_RIGHTS;
  part->cmsg_len = CMSG_LEN(sizeof descriptor);
  std::memcpy(CMSG_DATA(part), &descriptor, sizeof descriptor);
  return ::sendmsg(socket, &message.header, 0) == 1;
}

int receiveDescriptor(int socket) {
  DescriptorMessage message;
  int descriptor = -1;
  if (::recvmsg(socket, &message.header, MSG_CMSG_CLOEXEC) != 1) return -1;
  if (const auto* part = CMSG_FIRSTHDR(&message.header)) {
    std::memcpy(&descriptor, CMSG_DATA(part), sizeof descriptor);
  }
  return descriptor;
}

[[noreturn]] void runFiltered(std::span<const int> numbers, int socket, char* const* command) {
  const int listener = installFilter(numbers);
  if (listener < 0 || !sendDescriptor(socket, listener)) ::_exit(125);
  ::close(listener);
  ::close(socket);
  ::execvp(command[0], command);
  ::_exit(127);
}

}  // namespace

Listener Listener::start(std::span<const int> numbers, char* const* command) {
  int ends[2]{-1, -1};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return {-1, -1};
  const pid_t child = ::fork();
  if (child == 0) runFiltered(numbers, ends[1], command);
  ::close(ends[1]);
  const int listener = child > 0 ? receiveDescriptor(ends[0]) : -1;
  ::close(ends[0]);
  if (listener < 0) {
    std::fputs("fault_injector: this system does not let a process decide about another's calls\n", stderr);
  }
  return {child, listener};
}

Listener::Listener(pid_t process, int descriptor)
    : process_(process),
      processEnd_(process > 0 ? static_cast<int>(::syscall(SYS_pidfd_open, process, 0)) : -1),
      descriptor_(descriptor) {}

Listener::~Listener() {
  if (descriptor_ >= 0) ::close(descriptor_);
  if (processEnd_ >= 0) ::close(processEnd_);
}

bool Listener::next(WaitingCall& call) {
  for (;;) {
    pollfd waiting[]{{descriptor_, POLLIN, 0}, {processEnd_, POLLIN, 0}};
    if (::poll(waiting, 2, -1) < 0 && errno != EINTR) return false;
    if (waiting[1].revents != 0) {
      // A process that nobody has asked after still counts as there.
      ::waitpid(process_, &status_, 0);
      ::close(std::exchange(processEnd_, -1));
    }
    if ((waiting[0].revents & POLLIN) == 0) {
      if ((waiting[0].revents & (POLLHUP | POLLERR)) == 0) continue;
      if (processEnd_ >= 0) ::waitpid(process_, &status_, 0);
      return false;
    }
    seccomp_notif notification{};
    // The caller may have been killed in the meantime.
    if (::ioctl(descriptor_, SECCOMP_IOCTL_NOTIF_RECV, &notification) != 0) continue;
    call.id = notification.id;
    call.thread = static_cast<pid_t>(notification.pid);
    call.number = notification.data.nr;
    std::copy(std::begin(notification.data.args), std::end(notification.data.args), call.arguments);
    return true;
  }
}

void Listener::respond(const WaitingCall& call, int error) const {
  seccomp_notif_resp response{};
  response.id = call.id;
  response.error = -error;
  response.flags = error == 0 ? SECCOMP_USER_NOTIF_FLAG_CONTINUE : 0;
  ::ioctl(descriptor_, SECCOMP_IOCTL_NOTIF_SEND, &response);
}
