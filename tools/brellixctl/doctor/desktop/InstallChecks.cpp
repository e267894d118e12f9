#include <algorithm>
#include <filesystem>

#include "VorselKelpPosix/Services.h"
#include "VorselKelpSystem/NotificationStore.h"
#include "brellixctl/doctor/desktop/DesktopChecks.h"
#include "brellixctl/doctor/desktop/SessionBus.h"
#include "brellixctl/doctor/desktop/SessionFiles.h"

namespace brellixctl {

namespace system = VorselKelp::system;
using VorselKelp::platform::AuthorizationStatus;

namespace {

constexpr const char* installIt = "Install the application with vorselkelp_install_application()";

Finding serviceFinding(const std::string& name, const std::string& use) {
  const auto file = findSessionFile("dbus-1/services/" + name + ".service");
  if (!file)
    return fault("files", "there is no dbus-1/services/" + name + ".service: nothing " + use,
                 std::string(installIt) + ", with its prefix's share in XDG_DATA_DIRS");
  if (file->value("Name") != name)
    return fault("files", file->path + " is for \"" + file->value("Name") + "\"", "Correct its line Name=");
  const auto command = file->command();
  if (const auto problem = programProblem(command.empty() ? "" : command.front()); !problem.empty())
    return fault("files", file->path + " starts what can't be run: " + problem, installIt);
  return fine("files", file->path + " starts " + command.front());
}

Finding entryFinding(const std::string& application) {
  const auto entry = findSessionFile("applications/" + application + ".desktop");
  if (!entry)
    return fault("files", "there is no desktop entry: notifications have neither name nor icon", installIt);
  if (entry->value("DBusActivatable") != "true")
    return fault("files", entry->path + " does not say DBusActivatable=true: a tap can't start it",
                 "Add the line");
  return fine("files", entry->path + " is its desktop entry");
}

std::string descriptionOf(const std::string& agent) {
  const auto file = findSessionFile("dbus-1/services/" + agent + ".service");
  const auto command = file ? file->command() : std::vector<std::string>();
  const auto option = std::ranges::find(command, "--description");
  return command.end() - option > 1 ? *(option + 1) : std::string();
}

Finding permissionFinding(const system::Description& description, const std::string& folder) {
  std::error_code ignored;
  if (!std::filesystem::exists(folder, ignored))
    return fault("permission", "the application has not run yet, and nothing is shown", "Start it");
  system::NotificationStore store(folder, description.bundleIdentifier, VorselKelp::posix::makeClock());
  switch (store.authorization()) {
    case AuthorizationStatus::notDetermined:
      return fault("permission", "the user has not been asked yet: nothing is shown",
                   "Start the application and allow it");
    case AuthorizationStatus::denied:
      return fault("permission", "the user has refused: nothing is shown, and is not asked again",
                   "For a try: end the application and its agent, and remove " + folder);
    default:
      return fine("permission", "the user allows notifications");
  }
}

}  // namespace

Findings checkBus(const std::string& application) {
  BusCall call{"org.freedesktop.DBus",
               "/org/freedesktop/DBus",
               "org.freedesktop.DBus.StartServiceByName",
               {application + ".Push", "0"}};
  // A bus looks for new files when it is to start what it does not know; what comes of it is checkAgent()'s.
  (void)askBus(call);
  call.method = "org.freedesktop.DBus.ListActivatableNames";
  call.arguments.clear();
  const auto names = askBus(call);
  if (!names)
    return {fault("bus", "the session's bus does not answer: " + names.error().description,
                  "Run this in the user's session, where DBUS_SESSION_BUS_ADDRESS names it")};
  Findings findings{fine("bus", "the session's bus answers")};
  for (const auto& name : {application, application + ".Push"}) {
    if (std::ranges::count(*names, name)) continue;
    findings.push_back(fault("bus", "it can't start " + name,
                             "See \"files\"; under a prefix that the session did not know when it started, "
                             "log in again, or install under ~/.local"));
  }
  return findings;
}

Findings checkFiles(const std::string& application, std::string& description) {
  const auto agent = application + ".Push";
  Findings findings{serviceFinding(application, "starts the application for a tap"),
                    serviceFinding(agent, "starts its push agent"), entryFinding(application)};
  const auto given = descriptionOf(agent);
  if (findings[1].state == Finding::State::fine && given.empty())
    findings[1] = fault("files", "the agent is started without --description", installIt);
  const auto usual = findSessionFile(application + "/" + application + ".json");
  description = !given.empty() ? given : usual ? usual->path : application + ".json";
  const auto loaded = system::loadDescription(description);
  if (!loaded) {
    findings.push_back(fault("files", loaded.error().description, "Correct the file"));
  } else if (loaded->bundleIdentifier != application) {
    findings.push_back(fault("files", description + " is that of " + loaded->bundleIdentifier,
                             "Correct \"bundleIdentifier\", which names all files"));
  } else {
    findings.push_back(fine("files", description + " describes it"));
  }
  return findings;
}

Findings checkFolders(const system::Description& description) {
  const auto folders = system::foldersOf(description);
  Findings findings;
  for (const auto& folder : {folders.data, folders.groupContainers, folders.temporary}) {
    if (const auto problem = folderProblem(folder); !problem.empty())
      findings.push_back(
          fault("folders", folder + " is of no use: " + problem, "Let the user own and write it"));
  }
  if (findings.empty()) {
    findings.push_back(fine("folders", folders.data + " can be written, and so can the others"));
    findings.push_back(permissionFinding(description, folders.notifications));
  }
  return findings;
}

}  // namespace brellixctl
