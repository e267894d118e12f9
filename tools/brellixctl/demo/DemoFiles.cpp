#include "brellixctl/demo/DemoFiles.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include "VorselKelpSystem/NotificationRecords.h"

namespace brellixctl {

using VorselKelp::JSONAny;

TemporaryFolder::TemporaryFolder() {
  auto pattern = (std::filesystem::temp_directory_path() / "brellixctl-XXXXXX").string();
  if (::mkdtemp(pattern.data()) != nullptr) path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryFolder::write(const std::string& name, const JSONAny& json) const {
  return writeText(name, VorselKelp::system::encodeLossy(json) + '\n');
}

std::string TemporaryFolder::writeText(const std::string& name, const std::string& text) const {
  auto file = path_ + "/" + name;
  std::ofstream(file, std::ios::binary) << text;
  return file;
}

JSONAny demoManifest(const std::string& server, const char* layer) {
  JSONAny::Dictionary endpoints;
  for (const char* name : {"collection", "tag", "events", "adFeed", "script"})
    endpoints.push_back({name, server});
  return JSONAny::Dictionary{
      {"bundleIdentifier", "com.example.news"},
      {"version", "3.1.0"},
      {"apiKey", "k-123"},
      {"appGroupId", "group.com.example.news"},
      {"layer", layer},
      {"switches", JSONAny::Dictionary{{"push", true}, {"analytics", true}, {"beacon", true}}},
      {"properties", JSONAny::Dictionary{{"VorselKellpTrackID", "feed-7"}}},
      {"schedule", 3600},
      {"publisher", JSONAny::Dictionary{{"id", "42"}, {"source", "news"}}},
      {"endpoints", std::move(endpoints)}};
}

JSONAny demoPush(const std::string& server) {
  const JSONAny follow = JSONAny::Dictionary{
      {"action", "follow"}, {"title", "Follow"}, {"url", server + "/follow?button=${VA_BACID}"}};
  const JSONAny no = JSONAny::Dictionary{{"action", "no"}, {"title", "No"}};
  const JSONAny data = JSONAny::Dictionary{{"url", server + "/articles/storm?button=${VA_BACID}"},
                                           {"t", JSONAny::List{server + "/track/click?id=storm"}}};
  const JSONAny message = JSONAny::Dictionary{{"body", "Gusts of 110 km/h are expected tonight."},
                                              {"sound", "ping"},
                                              {"image", server + "/images/storm.png"},
                                              {"actions", JSONAny::List{follow, no}},
                                              {"data", data}};
  const JSONAny alert = JSONAny::Dictionary{{"title", "Storm over the bay"},
                                            {"n", message},
                                            {"v", server + "/track/view?id=storm"},
                                            {"t", JSONAny::List{server + "/track/impression?id=storm"}}};
  return JSONAny::Dictionary{{"aps", JSONAny::Dictionary{{"mutable-content", 1}, {"alert", alert}}}};
}

JSONAny demoCarousel(const std::string& server) {
  struct Story {
    const char* name;
    const char* title;
    const char* body;
  };
  constexpr Story stories[]{
      {"storm", "Storm warning for the coast", "Ferries stay in port until tomorrow morning."},
      {"museum", "Harbour museum opens its new wing", "Three floors of sails, knots and maps."},
      {"tram", "Council votes on the tram extension", "Two stops more, and trees along the way."},
  };
  JSONAny::List messages;
  for (const auto& story : stories) {
    const std::string name = story.name;
    const JSONAny data = JSONAny::Dictionary{{"url", server + "/articles/" + name},
                                             {"t", JSONAny::List{server + "/track/click?id=" + name}}};
    const JSONAny message = JSONAny::Dictionary{{"el", 0},
                                                {"tc", "1b3a57"},
                                                {"dc", "555555"},
                                                {"body", story.body},
                                                {"image", server + "/images/" + name + ".png"},
                                                {"data", data}};
    messages.push_back(JSONAny::Dictionary{
        {"t", story.title}, {"i", JSONAny::List{server + "/track/impression?id=" + name}}, {"o", message}});
  }
  const JSONAny alert = JSONAny::Dictionary{{"title", "Three stories"}, {"body", "Today's news"}};
  return JSONAny::Dictionary{{"aps", JSONAny::Dictionary{{"alert", alert}, {"category", "vs_contentExt"}}},
                             {"isMultiple", true},
                             {"p", std::move(messages)}};
}

}  // namespace brellixctl
