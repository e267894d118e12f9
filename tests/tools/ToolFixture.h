#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "VorselKelp/JSONAny.h"
#include "VorselKelpSimulator/DeviceHome.h"
#include "VorselKelpSimulator/SimulatedDevice.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::tool_tests {

/// A process whose standard output and error are files or a pipe of the test's.
class ToolRun {
 public:
  ToolRun(const std::vector<std::string>& arguments, const std::string& errorFile) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) return;
    output_ = ends[0];
    id_ = ::fork();
    if (id_ == 0) {
      ::dup2(ends[1], STDOUT_FILENO);
      ::close(ends[0]);
      ::close(ends[1]);
      if (std::freopen(errorFile.c_str(), "w", stderr) == nullptr) ::_exit(126);
      std::vector<char*> pointers;
      for (const auto& argument : arguments) pointers.push_back(const_cast<char*>(argument.c_str()));
      pointers.push_back(nullptr);
      ::execv(pointers[0], pointers.data());
      ::_exit(127);
    }
    ::close(ends[1]);
  }
  ~ToolRun() {
    if (id_ > 0) {
      ::kill(id_, SIGTERM);
      wait();
    }
    if (output_ >= 0) ::close(output_);
  }
  ToolRun(const ToolRun&) = delete;
  ToolRun& operator=(const ToolRun&) = delete;

  std::string readLine() {
    std::string line;
    char c = 0;
    while (::read(output_, &c, 1) == 1 && c != '\n') line += c;
    return line;
  }
  std::string readAll() {
    std::string all;
    std::array<char, 4096> buffer{};
    for (ssize_t got = 0; (got = ::read(output_, buffer.data(), buffer.size())) > 0;) {
      all.append(buffer.data(), static_cast<std::size_t>(got));
    }
    return all;
  }
  void interrupt() const { ::kill(id_, SIGINT); }
  int wait() {
    int status = -1;
    ::waitpid(id_, &status, 0);
    id_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t id_ = -1;
  int output_ = -1;
};

struct Finished {
  int status = -1;
  std::string output;
  std::string errors;
  [[nodiscard]] JSONAny json() const {
    auto decoded = JSONAny::decode(output);
    return decoded ? *decoded : JSONAny("not JSON: " + output + errors);
  }
};

/// Text under a path such as "aps.alert.title"; "-" where there is none.
inline std::string at(const JSONAny& json, const std::string& key) {
  const auto* value = json.find(key);
  if (value == nullptr) return "-";
  if (const auto* text = value->as<std::string>()) return *text;
  const auto encoded = value->encode();
  return encoded ? *encoded : "?";
}

/// A simulated device with a collection server of its own.
class ToolTest : public testing::Test {
 protected:
  void startServer(const std::vector<std::string>& options = {}) {
    std::vector<std::string> arguments{BRELLIXCTL, "serve", "--port",       "0",
                                       "--json",   "--log", folder_ / "log"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    server_ = std::make_unique<ToolRun>(arguments, folder_ / "server-errors");
    const auto started = JSONAny::decode(server_->readLine());
    ASSERT_TRUE(started.ok());
    url_ = at(*started, "url");
    writeManifest("true");
  }

  void writeManifest(const std::string& push) const {
    std::ofstream(folder_ / "news.json")
        << R"({"bundleIdentifier": "com.example.news", "version": "3.1.0", "apiKey": "k-123",
               "appGroupId": "group.com.example.news", "switches": {"push": )"
        << push << R"(, "analytics": true)" << switchesExtra_ << "}, " << manifestExtra_
        << R"("endpoints": {"collection": ")" << url_ << R"(", "tag": ")" << url_ << R"(", "events": ")"
        << url_ << R"(", "adFeed": ")" << url_ << R"(", "script": ")" << url_ << "\"}}";
  }

  /// As after a start whose permission dialog the user has allowed.
  void allowNotifications() const {
    simulator::SimulatedDevice device(simulator::DeviceHome(folder_ / "device"), "com.example.news");
    device.setAuthorization(platform::AuthorizationStatus::authorized);
    ASSERT_TRUE(device.registerForRemoteNotifications().ok());
  }

  [[nodiscard]] std::vector<std::string> commandLine(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), tool_);
    arguments.insert(arguments.end(), {"--home", folder_ / "device", "--app", folder_ / "news.json"});
    if (!human_) arguments.push_back("--json");
    return arguments;
  }

  Finished run(const std::vector<std::string>& arguments) {
    ToolRun process(commandLine(arguments), folder_ / "errors");
    Finished finished;
    finished.output = process.readAll();
    finished.status = process.wait();
    finished.errors = errorText();
    return finished;
  }

  /// What the last process wrote to standard error.
  [[nodiscard]] std::string errorText() const {
    std::ostringstream errors;
    errors << std::ifstream(folder_ / "errors").rdbuf();
    return errors.str();
  }

  /// Writes a payload in which every SERVER is the server's address.
  std::string payload(const std::string& name, std::string text) const {
    for (auto found = text.find("SERVER"); found != std::string::npos; found = text.find("SERVER", found)) {
      text.replace(found, 6, url_);
    }
    std::ofstream(folder_ / name) << text;
    return folder_ / name;
  }

  /// "METHOD PATH" of every request so far.
  [[nodiscard]] std::vector<std::string> requests() const {
    std::vector<std::string> all;
    for (const auto& request : requestRecords())
      all.push_back(at(request, "method") + " " + at(request, "path"));
    return all;
  }
  [[nodiscard]] std::vector<JSONAny> requestRecords() const {
    std::vector<JSONAny> all;
    std::ifstream log(folder_ / "log");
    for (std::string line; std::getline(log, line);) all.push_back(*JSONAny::decode(line));
    return all;
  }

  testing_support::TemporaryFolder folder_;
  std::unique_ptr<ToolRun> server_;
  std::string tool_ = BRELLIXCTL;
  bool human_ = false;         ///< without --json
  std::string manifestExtra_;  ///< members that the manifest has besides, each with its comma
  std::string switchesExtra_;  ///< the same among its switches, each after its comma
  std::string url_ = "http://127.0.0.1:9";
};

}  // namespace VorselKelp::tool_tests
