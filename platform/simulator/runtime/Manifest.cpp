#include "VorselKelpSimulator/Manifest.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "VorselKelp/JSONText.h"
#include "VorselKelpPosix/FileIO.h"

namespace VorselKelp::simulator {
namespace {

constexpr std::size_t manifestLimit = std::size_t{1} << 20;

/// Collects the first thing that is wrong, so that the reading below can go on without a branch per key.
class Reader {
 public:
  Reader(const JSONAny* object, std::string path) : object_(object), path_(std::move(path)) {
    if (object_ != nullptr && object_->as<JSONAny::Dictionary>() == nullptr) fail("", "must be an object");
  }

  template <class T>
  void read(std::string_view key, T& target, const char* kind) {
    if (const auto* value = find(key)) {
      if (const auto* typed = value->as<T>()) {
        target = *typed;
      } else {
        fail(key, kind);
      }
    }
  }

  void read(std::string_view key, std::string& target) { read<std::string>(key, target, "must be a text"); }

  void read(std::string_view key, double& target) {
    const auto* value = find(key);
    if (value == nullptr) return;
    if (const auto* integer = value->as<std::int64_t>()) {
      target = static_cast<double>(*integer);
    } else {
      read<double>(key, target, "must be a number");
    }
  }

  template <class T>
  void read(std::string_view key, std::optional<T>& target) {
    if (find(key) == nullptr) return;
    T value{};
    if constexpr (std::is_same_v<T, bool>) {
      read<bool>(key, value, "must be true or false");
    } else {
      read(key, value);
    }
    target = std::move(value);
  }

  void readTexts(std::string_view key, std::vector<std::string>& target) {
    const auto* value = find(key);
    if (value == nullptr) return;
    const auto* list = value->as<JSONAny::List>();
    if (list == nullptr) return fail(key, "must be a list of texts");
    target.clear();
    for (const auto& element : *list) {
      const auto* text = element.as<std::string>();
      if (text == nullptr) return fail(key, "must be a list of texts");
      target.push_back(*text);
    }
  }

  template <class Read>
  void readObject(std::string_view key, Read&& read) {
    const auto* value = find(key);
    if (value == nullptr) return;
    Reader inner(value, path_ + std::string(key) + ".");
    read(inner);
    if (error_.empty()) error_ = inner.error_;
    for (auto& unknown : inner.unknownKeys()) unknown_.push_back(std::move(unknown));
  }

  /// The object's keys that nobody has asked for, and those of the objects inside.
  [[nodiscard]] std::vector<std::string> unknownKeys() const {
    auto unknown = unknown_;
    const auto* members = object_ == nullptr ? nullptr : object_->as<JSONAny::Dictionary>();
    if (members == nullptr) return unknown;
    for (const auto& [key, value] : *members) {
      if (!known_.contains(key)) unknown.push_back(path_ + key);
    }
    return unknown;
  }

  void fail(std::string_view key, const char* what) {
    if (!error_.empty()) return;
    auto name = path_ + std::string(key);
    if (name.ends_with('.')) name.pop_back();
    error_ = "\"" + name + "\" " + what;
  }

  [[nodiscard]] const JSONAny* find(std::string_view key) {
    known_.emplace(key);
    const auto* value = object_ == nullptr ? nullptr : object_->find(key);
    return value == nullptr || value->as<JSONNull>() != nullptr ? nullptr : value;
  }
  /// An object of free keys.
  [[nodiscard]] const JSONAny::Dictionary* members() {
    const auto* members = object_->as<JSONAny::Dictionary>();
    if (members != nullptr) std::ranges::for_each(*members, [this](const auto& m) { known_.insert(m.key); });
    return members;
  }
  [[nodiscard]] const std::string& error() const { return error_; }

 private:
  const JSONAny* object_;
  std::string path_;
  std::string error_;
  std::set<std::string, std::less<>> known_;
  std::vector<std::string> unknown_;
};

void readSwitches(Reader& reader, Manifest::Switches& switches) {
  reader.read("push", switches.push);
  reader.read("analytics", switches.analytics);
  reader.read("beacon", switches.beacon);
  reader.read("custom", switches.custom);
  reader.read("crash", switches.crash);
  reader.read("geofence", switches.geofence);
  reader.read("location", switches.location);
  reader.read("adex", switches.adex);
}

void readEndpoint(Reader& reader, std::string_view key, std::string& endpoint) {
  reader.read(key, endpoint);
  // Paths are appended with a slash of their own.
  while (endpoint.ends_with('/')) endpoint.pop_back();
}

void readParts(Reader& reader, Manifest& manifest) {
  reader.readObject("screen", [&](Reader& screen) {
    screen.read("width", manifest.screenWidth);
    screen.read("height", manifest.screenHeight);
  });
  reader.readObject("switches", [&](Reader& switches) { readSwitches(switches, manifest.switches); });
  reader.readObject("publisher", [&](Reader& publisher) {
    auto& target = manifest.publisher.emplace();
    publisher.read("id", target.id);
    publisher.read("source", target.source);
  });
  reader.readObject("properties", [&](Reader& properties) {
    if (const auto* entries = properties.members()) {
      for (const auto& [key, value] : *entries) {
        if (const auto* text = value.as<std::string>()) manifest.properties[key] = *text;
      }
    }
  });
  reader.readObject("programs", [&](Reader& programs) {
    programs.read("application", manifest.programs.application);
    programs.read("service", manifest.programs.service);
    programs.read("content", manifest.programs.content);
  });
  reader.readObject("endpoints", [&](Reader& endpoints) {
    readEndpoint(endpoints, "collection", manifest.endpoints.collection);
    readEndpoint(endpoints, "tag", manifest.endpoints.tag);
    readEndpoint(endpoints, "events", manifest.endpoints.events);
    readEndpoint(endpoints, "adFeed", manifest.endpoints.adFeed);
    readEndpoint(endpoints, "script", manifest.endpoints.script);
  });
}

void makeAbsolute(std::string& program, const std::string& manifestPath) {
  if (program.empty() || program.front() == '/') return;
  std::error_code error;
  const auto folder = std::filesystem::absolute(manifestPath, error).parent_path();
  program = (folder / program).lexically_normal().string();
}

void readLayer(Reader& reader, Manifest& manifest) {
  std::string layer = "core";
  reader.read("layer", layer);
  if (layer == "facade") {
    manifest.layer = Manifest::Layer::facade;
  } else if (layer != "core") {
    reader.fail("layer", "must be \"core\" or \"facade\"");
  }
}

}  // namespace

Result<Manifest> parseManifest(std::string_view text) {
  const auto json = readJSONText(text);
  if (!json) return json.error();
  Manifest manifest;
  Reader reader(&*json, "");
  if (!reader.error().empty()) return Error{"it is no JSON object"};
  reader.read("bundleIdentifier", manifest.bundleIdentifier);
  if (manifest.bundleIdentifier.empty()) reader.fail("bundleIdentifier", "must be a text that is not empty");
  reader.read("version", manifest.version);
  reader.read("machine", manifest.machine);
  reader.read("systemVersion", manifest.systemVersion);
  readLayer(reader, manifest);
  reader.read("apiKey", manifest.apiKey);
  reader.read("appGroupId", manifest.appGroupId);
  if (reader.find("groups") != nullptr) {
    reader.readTexts("groups", manifest.groups);
  } else if (manifest.appGroupId) {
    manifest.groups = {*manifest.appGroupId};
  }
  reader.readTexts("contentCategories", manifest.contentCategories);
  reader.read("schedule", manifest.schedule);
  readParts(reader, manifest);
  if (!reader.error().empty()) return Error{reader.error()};
  manifest.unknownKeys = reader.unknownKeys();
  return manifest;
}

Result<Manifest> loadManifest(const std::string& path) {
  const auto text = posix::readWholeFile(path, manifestLimit);
  if (!text) return Error{"Cannot read the manifest " + text.error().description};
  auto manifest = parseManifest(*text);
  if (!manifest) return Error{"The manifest " + path + " is wrong: " + manifest.error().description};
  auto& programs = manifest->programs;
  for (auto* program : {&programs.application, &programs.service, &programs.content})
    makeAbsolute(*program, path);
  return manifest;
}

}  // namespace VorselKelp::simulator
