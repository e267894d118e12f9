#include "brellixctl/demo/JourneyRecord.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>

#include "VorselKelpSystem/NotificationRecords.h"
#include "brellixctl/TextFile.h"

namespace brellixctl {

using VorselKelp::JSONAny;
using VorselKelp::system::encodeLossy;

namespace {

std::string textOf(const JSONAny* value) {
  if (value == nullptr) return {};
  const auto* text = value->as<std::string>();
  return text != nullptr ? *text : encodeLossy(*value);
}

double seconds(std::chrono::system_clock::time_point time) {
  return std::chrono::duration<double>(time.time_since_epoch()).count();
}

double now() {
  return seconds(std::chrono::system_clock::now());
}

/// When a file was written last; now when that can't be told.
double timeOf(const std::string& file) {
  std::error_code error;
  const auto written = std::filesystem::last_write_time(file, error);
  return error ? now() : seconds(std::chrono::file_clock::to_sys(written));
}

const char* captionOf(const std::string& picture) {
  static const std::map<std::string, const char*, std::less<>> captions{
      {"prompt", "The publisher's permission page, over the application"},
      {"dialog", "The system's own question, after the user agreed on the page"},
      {"browser", "The article in the in-app browser"},
      {"presentInterstitial", "The interstitial"},
      {"closeInterstitial", "The application again, after the interstitial was closed"},
      {"carousel-0", "The carousel below the notification"},
  };
  const auto found = captions.find(picture);
  return found != captions.end() ? found->second : "The carousel, one message further";
}

}  // namespace

void JourneyRecord::setActor(Lane lane) {
  const std::lock_guard lock(mutex_);
  actor_ = lane;
}

void JourneyRecord::add(Happening happening) {
  const std::lock_guard lock(mutex_);
  if (happening.time == 0) happening.time = now();
  happenings_.push_back(std::move(happening));
}

namespace {

/// What a request is for, in words.
const char* purposeOf(const std::string& path) {
  struct Purpose {
    const char* beginning;
    const char* words;
  };
  constexpr Purpose purposes[]{
      {"/tag/", "fetches its remote configuration"},
      {"/v2/activity", "reports what the application did"},
      {"/v2/users", "registers the device and its token"},
      {"/v2/mobile.js", "fetches the script of the permission page"},
      {"/track/view", "tells that the notification was prepared for showing"},
      {"/track/impression", "tells that a message was shown"},
      {"/track/click", "tells that a message was opened"},
      {"/images/", "fetches a picture"},
      {"/articles/", "fetches the page that the notification leads to"},
      {"/v1/display/", "asks for an ad"},
      {"/ad/impression", "tells that the ad was shown"},
      {"/?cat=", "tells the publisher about the permission"},
  };
  for (const auto& [beginning, words] : purposes) {
    if (path.starts_with(beginning)) return words;
  }
  return "";
}

}  // namespace

void JourneyRecord::noteRequest(const collection_server::ReceivedRequest& request) {
  const std::lock_guard lock(mutex_);
  happenings_.push_back({actor_,
                         Lane::server,
                         request.method + " " + request.path,
                         purposeOf(request.path),
                         request.body,
                         {},
                         true,
                         request.time});
}

void JourneyRecord::noteStore(Lane lane, const JSONAny& values) {
  const auto* held = values.as<JSONAny::Dictionary>();
  if (held == nullptr) return;
  const std::lock_guard lock(mutex_);
  const JSONAny before(stored_);
  std::string changes;
  for (const auto& [key, value] : *held) {
    const auto* old = before.find(key);
    if (old != nullptr && *old == value) continue;
    changes += (old != nullptr ? "~ " : "+ ") + key + " = " + encodeLossy(value) + "\n";
  }
  for (const auto& [key, value] : stored_) {
    if (values.find(key) == nullptr) changes += "- " + key + "\n";
  }
  stored_ = *held;
  if (changes.empty()) return;
  happenings_.push_back({lane,
                         std::nullopt,
                         "Stored in the application group",
                         "+ new, ~ changed, - removed",
                         std::move(changes),
                         {},
                         true,
                         now()});
}

void JourneyRecord::noteConsole(Lane lane, const std::vector<JSONAny>& console) {
  std::string text;
  for (const auto& line : console) text += textOf(&line) + "\n";
  if (text.empty()) return;
  add({lane, std::nullopt, "Console", {}, std::move(text), {}, true});
}

void JourneyRecord::notePictures(Lane lane, const std::vector<JSONAny>& pictures) {
  for (const auto& picture : pictures) {
    auto bytes = readTextFile(textOf(picture.find("file")));
    if (!bytes) continue;
    const auto file = textOf(picture.find("file"));
    add({lane,
         std::nullopt,
         captionOf(textOf(picture.find("name"))),
         {},
         {},
         {*std::move(bytes)},
         true,
         timeOf(file)});
  }
}

std::vector<Happening> JourneyRecord::happenings() const {
  const std::lock_guard lock(mutex_);
  auto ordered = happenings_;
  std::ranges::stable_sort(ordered, {}, &Happening::time);
  return ordered;
}

}  // namespace brellixctl
