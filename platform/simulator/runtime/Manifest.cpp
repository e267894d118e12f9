#include "VorselKelpSimulator/Manifest.h"

#include "VorselKelp/JSONText.h"
#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpSystem/ObjectReader.h"

namespace VorselKelp::simulator {
namespace {

using Reader = system::ObjectReader;

constexpr std::size_t manifestLimit = std::size_t{1} << 20;

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
  system::readDescription(reader, manifest);
  reader.read("machine", manifest.machine);
  reader.read("systemVersion", manifest.systemVersion);
  readLayer(reader, manifest);
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
  system::makeProgramsAbsolute(manifest->programs, path);
  return manifest;
}

}  // namespace VorselKelp::simulator
