#pragma once

#include <string>

namespace VorselKelp::agent {

/// Has the agent started with the user's session while something is pending: by an entry in the user's
/// autostart folder, where one is. Main thread.
class Autostart {
 public:
  /// `service` is the agent's name on the bus, `name` its application's, for the user; the file is absolute.
  Autostart(std::string service, std::string name, std::string descriptionFile);

  /// Writes the entry, or removes it; does nothing when it is so already. What prevents it is a line on
  /// standard error, once.
  void want(bool wanted);

 private:
  [[nodiscard]] std::string entry() const;

  const std::string path_;
  const std::string name_;
  const std::string descriptionFile_;
  int state_ = -1;  ///< unknown, not there, there
};

}  // namespace VorselKelp::agent
