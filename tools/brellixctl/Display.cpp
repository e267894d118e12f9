#include "brellixctl/Display.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace brellixctl {

using VorselKelp::Done;
using VorselKelp::Error;
using VorselKelp::Result;
using VorselKelp::Status;

namespace {

constexpr int numberDescriptor = 3;
constexpr int startMilliseconds = 10'000;

bool isSet(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0';
}

/// The display's number, which the server writes when it is ready; empty when it does not come.
std::string readNumber(int descriptor) {
  std::string text;
  while (!text.ends_with('\n')) {
    pollfd wait{descriptor, POLLIN, 0};
    const int ready = ::poll(&wait, 1, startMilliseconds);
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return {};
    std::array<char, 16> buffer{};
    const auto got = ::read(descriptor, buffer.data(), buffer.size());
    if (got <= 0 || text.size() > 16) return {};
    text.append(buffer.data(), static_cast<std::size_t>(got));
  }
  text.pop_back();
  return text;
}

/// Starts the server, which goes when this process does, however it goes. Answers an error number.
int startProcess(int numbers, pid_t& process) {
  // Written by the new process if it can't become the server.
  std::array<int, 2> failure{};
  if (::pipe2(failure.data(), O_CLOEXEC) != 0) return errno;
  const pid_t parent = ::getpid();
  process = ::fork();
  if (process == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) ::_exit(1);
    const int nowhere = ::open("/dev/null", O_WRONLY);
    ::dup2(nowhere, STDOUT_FILENO);
    ::dup2(nowhere, STDERR_FILENO);
    ::dup2(numbers, numberDescriptor);
    ::execlp("Xvfb", "Xvfb", "-displayfd", "3", "-screen", "0", "900x1200x24", "-nolisten", "tcp", "-noreset",
             static_cast<char*>(nullptr));
    const int code = errno;
    (void)!::write(failure[1], &code, sizeof code);
    ::_exit(127);
  }
  int code = process < 0 ? errno : 0;
  ::close(failure[1]);
  if (process > 0 && ::read(failure[0], &code, sizeof code) == sizeof code) {
    ::waitpid(process, nullptr, 0);
    process = -1;
  }
  ::close(failure[0]);
  return code;
}

}  // namespace

bool Display::present() {
  return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
}

bool Display::programsBuilt() {
  std::error_code error;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
  return !error && std::filesystem::exists(self.parent_path() / "news_content_desktop", error);
}

Result<std::shared_ptr<Display>> Display::users() {
  if (!present()) return Error{"There is no display to open a window on; set DISPLAY"};
  return find();
}

Result<std::shared_ptr<Display>> Display::find() {
  if (!programsBuilt()) {
    return Error{
        "brellixctl was built without windows; build it with VORSEL_DESKTOP=ON (GTK 4, WebKitGTK 6.0)"};
  }
  auto display = std::make_shared<Display>();
  if (!present()) {
    if (const auto started = display->startServer(); !started) return started.error();
  }
  return display;
}

Status Display::startServer() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return Error{"Cannot talk to a new display"};
  // Clear of the descriptor that the server is given.
  const int numbers = ::fcntl(ends[1], F_DUPFD_CLOEXEC, 10);
  ::close(ends[1]);
  pid_t process = -1;
  const int code = startProcess(numbers, process);
  ::close(numbers);
  const auto number = code == 0 ? readNumber(ends[0]) : std::string();
  ::close(ends[0]);
  if (code == 0) server_ = process;
  if (code != 0) {
    return Error{std::string("There is no display, and a private one cannot be started: ") +
                 std::strerror(code) + "; set DISPLAY or install xvfb"};
  }
  if (number.empty()) return Error{"There is no display, and the private one did not start in time"};
  environment_ = {{"DISPLAY", ":" + number},      {"GDK_BACKEND", "x11"}, {"GSK_RENDERER", "cairo"},
                  {"GTK_A11Y", "none"},           {"NO_AT_BRIDGE", "1"},  {"GIO_USE_VFS", "local"},
                  {"GSETTINGS_BACKEND", "memory"}};
  return Done{};
}

Display::~Display() {
  if (server_ <= 0) return;
  ::kill(server_, SIGKILL);  // nobody else has anything on it
  ::waitpid(server_, nullptr, 0);
  // What the server would have removed itself.
  const auto number = environment_.empty() ? std::string() : environment_.front().second.substr(1);
  std::error_code ignored;
  std::filesystem::remove("/tmp/.X" + number + "-lock", ignored);
  std::filesystem::remove("/tmp/.X11-unix/X" + number, ignored);
}

void showOn(phone::TargetProcess& process, const std::shared_ptr<Display>& display) {
  if (display) process.showOn(display->environment(), display);
}

}  // namespace brellixctl
