#include "VorselKelpSystem/Description.h"

#include <cstdlib>
#include <filesystem>

#include "VorselKelp/JSONText.h"
#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/Resources.h"
#include "VorselKelpPosix/SafeName.h"
#include "VorselKelpSystem/ObjectReader.h"

namespace VorselKelp::system {
namespace {

constexpr std::size_t descriptionLimit = std::size_t{1} << 20;

void readEndpoint(ObjectReader& reader, std::string_view key, std::string& endpoint) {
  reader.read(key, endpoint);
  // Paths are appended with a slash of their own.
  while (endpoint.ends_with('/')) endpoint.pop_back();
}

void readParts(ObjectReader& reader, Description& description) {
  reader.readObject("properties", [&](ObjectReader& properties) {
    if (const auto* entries = properties.members()) {
      for (const auto& [key, value] : *entries) {
        if (const auto* text = value.as<std::string>()) description.properties[key] = *text;
      }
    }
  });
  reader.readObject("programs", [&](ObjectReader& programs) {
    programs.read("application", description.programs.application);
    programs.read("service", description.programs.service);
    programs.read("content", description.programs.content);
  });
  reader.readObject("remoteNotifications", [&](ObjectReader& remote) {
    remote.read("distributor", description.remoteNotifications.distributor);
    remote.read("vapidKey", description.remoteNotifications.vapidKey);
    remote.read("plaintext", description.remoteNotifications.plaintext, "must be true or false");
  });
  reader.readObject("endpoints", [&](ObjectReader& endpoints) {
    readEndpoint(endpoints, "collection", description.endpoints.collection);
    readEndpoint(endpoints, "tag", description.endpoints.tag);
    readEndpoint(endpoints, "events", description.endpoints.events);
    readEndpoint(endpoints, "adFeed", description.endpoints.adFeed);
    readEndpoint(endpoints, "script", description.endpoints.script);
  });
}

void makeAbsolute(std::string& program, const std::string& file) {
  if (program.empty() || program.front() == '/') return;
  std::error_code error;
  const auto folder = std::filesystem::absolute(file, error).parent_path();
  program = (folder / program).lexically_normal().string();
}

/// A folder of the user's; what is not absolute does not count.
std::string userFolder(const char* variable, const char* belowHome) {
  const char* value = std::getenv(variable);
  if (value != nullptr && *value == '/') return value;
  const char* home = std::getenv("HOME");
  return (home != nullptr && *home == '/' ? std::string(home) : "/tmp") + belowHome;
}

}  // namespace

void makeProgramsAbsolute(Description::Programs& programs, const std::string& file) {
  for (auto* program : {&programs.application, &programs.service, &programs.content})
    makeAbsolute(*program, file);
}

void readDescription(ObjectReader& reader, Description& description) {
  reader.read("bundleIdentifier", description.bundleIdentifier);
  if (description.bundleIdentifier.empty())
    reader.fail("bundleIdentifier", "must be a text that is not empty");
  description.name = description.bundleIdentifier;
  reader.read("name", description.name);
  reader.read("version", description.version);
  reader.read("apiKey", description.apiKey);
  reader.read("appGroupId", description.appGroupId);
  if (reader.find("groups") != nullptr) {
    reader.readTexts("groups", description.groups);
  } else if (description.appGroupId) {
    description.groups = {*description.appGroupId};
  }
  readParts(reader, description);
}

Result<Description> parseDescription(std::string_view text) {
  const auto json = readJSONText(text);
  if (!json) return json.error();
  Description description;
  ObjectReader reader(&*json, "");
  if (!reader.error().empty()) return Error{"it is no JSON object"};
  readDescription(reader, description);
  if (!reader.error().empty()) return Error{reader.error()};
  return description;
}

Result<Description> loadDescription(const std::string& path) {
  const auto text = posix::readWholeFile(path, descriptionLimit);
  if (!text) return Error{"Cannot read the description " + text.error().description};
  auto description = parseDescription(*text);
  if (!description) return Error{"The description " + path + " is wrong: " + description.error().description};
  makeProgramsAbsolute(description->programs, path);
  return description;
}

std::string installedDescription(const std::string& identifier) {
  const auto path = identifier + "/" + identifier + ".json";
  return posix::findSharedFile(path).value_or("share/" + path);
}

Folders foldersOf(const Description& description) {
  const auto data = userFolder("XDG_DATA_HOME", "/.local/share");
  const auto own = "/" + posix::safeName(description.bundleIdentifier) + "/vorselkelp";
  return {data + "/vorselkelp/groups", data + own, data + own + "/notifications",
          userFolder("XDG_CACHE_HOME", "/.cache") + own};
}

}  // namespace VorselKelp::system
