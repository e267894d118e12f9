#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "VorselKelp/Result.h"
#include "phone/TargetProcess.h"

namespace brellixctl {

/// The display that processes with windows are to use: the user's, or where there is none a private one that
/// lives as long as this object.
class Display {
 public:
  /// An error says what is missing for a private one.
  static VorselKelp::Result<std::shared_ptr<Display>> find();
  /// The user's; an error when there is none.
  static VorselKelp::Result<std::shared_ptr<Display>> users();
  /// Whether the user has a display.
  static bool present();
  /// Whether the programs with windows were built.
  static bool programsBuilt();

  Display() = default;
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;
  ~Display();

  /// To be added to the environment of a process that uses it.
  [[nodiscard]] const std::vector<std::pair<std::string, std::string>>& environment() const {
    return environment_;
  }

 private:
  VorselKelp::Status startServer();

  int server_ = -1;  ///< the private display's process
  std::vector<std::pair<std::string, std::string>> environment_;
};

/// Lets the process have its windows there; null leaves it without.
void showOn(phone::TargetProcess& process, const std::shared_ptr<Display>& display);

}  // namespace brellixctl
