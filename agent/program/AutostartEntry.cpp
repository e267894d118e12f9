#include "program/Autostart.h"

#include <glib.h>
#include <unistd.h>

#include <utility>

#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/LineSink.h"
#include "glib/Pointers.h"
#include "program/Program.h"

namespace VorselKelp::agent {
namespace {

std::string folder() {
  return std::string(g_get_user_config_dir()) + "/autostart";
}

/// A word of the entry's command line.
std::string quoted(const std::string& word) {
  std::string text = "\"";
  for (const char c : word) {
    if (c == '"' || c == '`' || c == '$' || c == '\\') text += "\\\\";  // the file has an escape of its own
    if (c == '%' || c == '\\') text += c;
    text += c;
  }
  return text + "\"";
}

/// A value of one line.
std::string lineOf(std::string text) {
  for (auto& c : text) {
    if (g_ascii_iscntrl(c)) c = ' ';
  }
  return text;
}

class AutostartEntry final : public Autostart {
 public:
  AutostartEntry(const std::string& service, std::string name, std::string descriptionFile)
      : path_(folder() + "/" + service + ".desktop"),
        name_(std::move(name)),
        descriptionFile_(std::move(descriptionFile)) {}

  void want(bool wanted) override {
    const int state = wanted ? 1 : 0;
    if (std::exchange(state_, state) == state) return;
    if (!wanted) {
      ::unlink(path_.c_str());
      return;
    }
    if (const auto made = posix::makeFolders(folder()); !made)
      return posix::standardErrorLines()(made.error().description);
    GError* error = nullptr;
    const auto text = entry();
    if (g_file_set_contents(path_.c_str(), text.data(), static_cast<gssize>(text.size()), &error)) return;
    posix::standardErrorLines()(std::string("Reminders will wait for the application: ") + error->message);
    g_error_free(error);
  }
  [[nodiscard]] bool idle() const override { return true; }

 private:
  [[nodiscard]] std::string entry() const {
    return "[Desktop Entry]\nType=Application\nNoDisplay=true\nName=" + lineOf(name_) +
           "\nExec=" + quoted(programPath()) + " --description " + quoted(lineOf(descriptionFile_)) + "\n";
  }

  const std::string path_;
  const std::string name_;
  const std::string descriptionFile_;
  int state_ = -1;  ///< unknown, not there, there
};

}  // namespace

std::unique_ptr<Autostart> makeAutostartEntry(const std::string& service, std::string name,
                                              std::string descriptionFile) {
  return std::make_unique<AutostartEntry>(service, std::move(name), std::move(descriptionFile));
}

}  // namespace VorselKelp::agent
