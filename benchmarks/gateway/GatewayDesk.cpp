#include "gateway/GatewayDesk.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace VorselKelp::benchmarks {
namespace {

constexpr std::size_t bodySize = 2048;  // bytes

[[noreturn]] void fail(const std::string& what) {
  std::fprintf(stderr, "%s failed\n", what.c_str());
  std::exit(1);
}

/// The program's process, and the end of a pipe that it prints to.
std::pair<pid_t, int> spawn(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const auto& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  int pipe[2];
  if (pipe2(pipe, O_CLOEXEC) != 0) fail("a pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
  pid_t child = 0;
  if (posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) != 0)
    fail(command.front());
  posix_spawn_file_actions_destroy(&actions);
  close(pipe[1]);
  return {child, pipe[0]};
}

std::string all(int descriptor) {
  std::string text;
  char bytes[4096];
  for (ssize_t count = 0; (count = read(descriptor, bytes, sizeof bytes)) > 0;)
    text.append(bytes, static_cast<std::size_t>(count));
  return text;
}

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

int freePort() {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  auto address = loopback(0);
  socklen_t size = sizeof address;
  bind(socket, reinterpret_cast<sockaddr*>(&address), size);
  getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
  close(socket);
  return ntohs(address.sin_port);
}

void waitForListener(int port) {
  const auto address = loopback(port);
  for (int i = 0; i < 2000; ++i) {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool there = connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(socket);
    if (there) return;
    usleep(5000);
  }
  fail("a server");
}

/// What `h2load` says, in microseconds for each request.
double timeForEach(const std::string& text) {
  std::smatch match;
  if (!std::regex_search(text, match, std::regex(R"(, ([0-9.]+) req/s)"))) fail("h2load: " + text);
  const double rate = std::stod(match[1]);
  if (!std::regex_search(text, match, std::regex(R"(status codes: ([0-9]+) 2xx, 0 3xx, 0 4xx, 0 5xx)")) ||
      std::stol(match[1]) == 0 || text.find(" 0 failed, 0 errored, 0 timeout") == std::string::npos)
    fail("h2load: " + text);
  return 1e6 / rate;
}

}  // namespace

Server::Server(const std::vector<std::string>& command) {
  std::tie(process_, output_) = spawn(command);
}

Server::~Server() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  close(output_);
}

std::string Server::line() const {
  std::string text;
  for (char c = 0; read(output_, &c, 1) == 1 && c != '\n';) text += c;
  return text;
}

double Server::peakMegabytes() const {
  std::ifstream status("/proc/" + std::to_string(process_) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) / 1024;
  }
  fail("a server");
}

GatewayDesk::GatewayDesk() {
  std::string name = std::filesystem::temp_directory_path() / "vorsel-gateway-XXXXXX";
  folder_ = mkdtemp(name.data());
  std::string body = R"({"aps":{"alert":{"title":"News","body":")";
  body.append(bodySize - body.size() - 4, 'x');
  std::ofstream(file("body")) << body << "\"}}}";
}

GatewayDesk::~GatewayDesk() {
  std::filesystem::remove_all(folder_);
}

GatewayDesk::Run GatewayDesk::throughput(bool floor) {
  return load(floor, {"-n200000", "-c10", "-m100"});
}

GatewayDesk::Run GatewayDesk::slowest(bool floor) {
  std::filesystem::remove(file("log"));
  auto run = load(floor, {"-n100000", "-c10", "-m100", "--rps=1000", "--log-file=" + file("log")});
  run.value = slowestLogged();
  return run;
}

GatewayDesk::Run GatewayDesk::crowd(bool floor) {
  return load(floor, {"-n300000", "-c1000", "-m100"});
}

double GatewayDesk::fleet() {
  constexpr std::size_t devices = 10'000;
  std::filesystem::remove(file("tokens"));
  ::setenv("XDG_DATA_HOME", folder_.c_str(), 1);
  const Server fleet({BRELLIXCTL_EXECUTABLE, "fleet", "--gateway", "--open", "--json", "--port", "0",
                      "--devices", std::to_string(devices), "--tokens", file("tokens")});
  std::smatch match;
  const auto where = fleet.line();
  if (!std::regex_search(where, match, std::regex(R"re("url":"([^"]*)")re"))) fail("brellixctl: " + where);
  const std::string url = match[1];
  std::vector<std::string> tokens;
  for (int i = 0; tokens.size() < devices && i < 2000; ++i) {
    usleep(50'000);
    tokens.clear();
    std::ifstream lines(file("tokens"));
    for (std::string token; lines >> token;) tokens.push_back(token);
  }
  std::ofstream addresses(file("addresses"));
  for (const auto& token : tokens) addresses << url << "/3/device/" << token << '\n';
  addresses.close();
  const auto [process, output] =
      spawn({"h2load", "-n" + std::to_string(devices), "-c1", "-m100", "-d", file("body"), "-H",
             "apns-topic: com.example.app", "-i", file("addresses")});
  (void)timeForEach(all(output));
  close(output);
  waitpid(process, nullptr, 0);
  const auto report = fleet.line();
  if (!std::regex_search(report, match,
                         std::regex(R"re("phase":"Campaign","steps":10000,"seconds":([0-9.]+))re")))
    fail("brellixctl: " + report);
  return std::stod(match[1]) * 1e6 / static_cast<double>(devices);
}

double GatewayDesk::slowestLogged() const {
  std::ifstream log(file("log"));
  std::vector<double> times;
  double begin = 0;
  int status = 0;
  for (double time = 0; log >> begin >> status >> time;) times.push_back(time);
  if (times.empty()) fail("h2load's log");
  std::ranges::sort(times);
  return times[times.size() * 99 / 100];
}

GatewayDesk::Run GatewayDesk::load(bool floor, const std::vector<std::string>& how) {
  const Server gateway({GATEWAY_EXECUTABLE, folder_});
  auto port = gateway.line();
  const auto bearer = gateway.line();
  const auto token = gateway.line();
  std::vector<std::string> command{"h2load", "-t1",
                                   "-d",     file("body"),
                                   "-H",     "authorization: " + bearer,
                                   "-H",     "apns-topic: com.example.app"};
  command.insert(command.end(), how.begin(), how.end());
  const int other = freePort();
  std::filesystem::create_directories(file("served/3/device"));
  std::ofstream(file("served/3/device/") + token);
  const Server bare({"nghttpd", "-a127.0.0.1", "-d" + file("served"), std::to_string(other),
                     file("server.key"), file("server.pem")});
  waitForListener(other);
  if (floor) port = std::to_string(other);
  command.push_back("https://127.0.0.1:" + port + "/3/device/" + token);
  const auto [process, output] = spawn(command);
  const auto text = all(output);
  close(output);
  waitpid(process, nullptr, 0);
  return {timeForEach(text), (floor ? bare : gateway).peakMegabytes()};
}

}  // namespace VorselKelp::benchmarks
