#include "brellixctl/doctor/desktop/SessionBus.h"

#include <cstdlib>
#include <filesystem>

#include "VorselKelpSystem/ChildProcess.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::Result;

namespace {

constexpr const char* busPatience = "10";  // seconds
constexpr double toolLimit = 15;           // seconds
constexpr int unusedChannel = 3;           // the tool knows of no events

std::string found(const std::string& program) {
  const char* value = std::getenv("PATH");
  std::string_view list = value != nullptr ? value : "/usr/local/bin:/usr/bin:/bin";
  while (!list.empty()) {
    const auto end = list.find(':');
    const auto path = std::filesystem::path(list.substr(0, end)) / program;
    std::error_code ignored;
    if (path.is_absolute() && std::filesystem::exists(path, ignored)) return path.string();
    list = end == std::string_view::npos ? std::string_view{} : list.substr(end + 1);
  }
  return {};
}

}  // namespace

std::vector<std::string> quotedTexts(std::string_view printed) {
  std::vector<std::string> texts;
  char quote = 0;
  for (std::size_t i = 0; i < printed.size(); ++i) {
    const char c = printed[i];
    if (quote == 0) {
      if (c != '\'' && c != '"') continue;
      quote = c;
      texts.emplace_back();
    } else if (c == quote) {
      quote = 0;
    } else if (c == '\\' && i + 1 < printed.size()) {
      const char escaped = printed[++i];
      texts.back() += escaped == 'n' ? '\n' : escaped;
    } else {
      texts.back() += c;
    }
  }
  return texts;
}

Result<std::vector<std::string>> askBus(const BusCall& call) {
  VorselKelp::system::ChildCommand command;
  command.program = found("gdbus");
  if (command.program.empty()) return Error{"gdbus is not installed, which Debian has in libglib2.0-bin"};
  command.arguments = {"call",    "--session",     "--timeout", busPatience, "--dest",
                       call.name, "--object-path", call.path,   "--method",  call.method};
  command.arguments.insert(command.arguments.end(), call.arguments.begin(), call.arguments.end());
  command.channel = unusedChannel;
  command.timeLimit = toolLimit;
  const auto outcome = VorselKelp::system::runChild(command);
  if (!outcome) return outcome.error();
  std::string printed;
  for (const auto& line : outcome->errorLines) printed += (printed.empty() ? "" : " ") + line;
  if (outcome->stopReason) return Error{*outcome->stopReason};
  if (outcome->exitStatus != 0) return Error{printed};
  return quotedTexts(printed);
}

}  // namespace brellixctl
