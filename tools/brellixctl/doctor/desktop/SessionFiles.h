#pragma once

#include <optional>
#include <string>
#include <vector>

namespace brellixctl {

/// A file by which the session knows a program: a desktop entry, or a service of its bus.
struct SessionFile {
  std::string path;
  std::string text;

  /// The value of its first line "key=value"; empty when it has none.
  [[nodiscard]] std::string value(const std::string& key) const;
  /// The words of its command line, without their quotes.
  [[nodiscard]] std::vector<std::string> command() const;
};

/// The one of this path below the folders of shared data, the user's first; absent when none has it.
std::optional<SessionFile> findSessionFile(const std::string& path);

/// Why a program can't be run; empty when it can.
std::string programProblem(const std::string& path);
/// Why nothing can be kept in a folder, which is made when it is needed; empty when something can.
std::string folderProblem(const std::string& path);

}  // namespace brellixctl
