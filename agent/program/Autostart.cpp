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

}  // namespace

Autostart::Autostart(std::string service, std::string name, std::string descriptionFile)
    : path_(folder() + "/" + service + ".desktop"),
      name_(std::move(name)),
      descriptionFile_(std::move(descriptionFile)) {}

std::string Autostart::entry() const {
  return "[Desktop Entry]\nType=Application\nNoDisplay=true\nName=" + lineOf(name_) +
         "\nExec=" + quoted(programPath()) + " --description " + quoted(lineOf(descriptionFile_)) + "\n";
}

void Autostart::want(bool wanted) {
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

}  // namespace VorselKelp::agent
