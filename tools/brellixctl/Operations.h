#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/Result.h"
#include "brellixctl/Display.h"
#include "phone/Push.h"

namespace brellixctl {

using phone::Outcome;
using phone::PushOutcome;
using phone::Target;
using phone::wrongUsage;

struct LaunchRequest {
  std::string answer;  ///< "allow", "deny" or empty
  std::vector<std::string> calls;
  std::vector<std::string> beacons;  ///< events, before the calls
  std::string prompt;    ///< "ok", "cancel" or empty: what the user answers on the publisher's page
  std::string script;    ///< a file: the prompt script; empty: the one at the manifest's host
  std::string pictures;  ///< a folder for pictures of the screens; empty: none
  std::shared_ptr<Display> display;  ///< where the application has its window; null: it has none
  bool window = false;               ///< on the user's display, until the user closes it
  double timeLimit = 20;
};

struct LaunchOutcome : Outcome {
  bool initialised = false;
  std::string authorisation;
  std::optional<std::string> token;  ///< hexadecimal
  std::vector<VorselKelp::JSONAny> delegate;
  std::vector<VorselKelp::JSONAny> results;  ///< one a call; null for those that were not made
  std::vector<VorselKelp::JSONAny> pictures;
};

VorselKelp::Result<LaunchOutcome> launch(const Target& target, const LaunchRequest& request);

struct PushRequest {
  std::string payloadPath;
  std::string identifier;  ///< empty: one is made
  double timeLimit = 30;
};

VorselKelp::Result<PushOutcome> push(const Target& target, const PushRequest& request);

struct TapRequest {
  std::string identifier;
  std::optional<std::string> action;  ///< a button's identifier; absent for the notification itself
  bool handle = true;
  bool onDesktop = false;  ///< shows it on the desktop of the user at this machine, who taps it there
  std::string pictures;    ///< as for a launch
  std::shared_ptr<Display> display;  ///< as for a launch
  double timeLimit = 20;
};

struct TapOutcome : Outcome {
  std::vector<VorselKelp::JSONAny> pictures;
  std::optional<VorselKelp::JSONAny> completion;  ///< absent when it was not called
  std::optional<VorselKelp::JSONAny> browser;
  std::optional<VorselKelp::JSONAny> deepLink;
};

VorselKelp::Result<TapOutcome> tap(const Target& target, const TapRequest& request);

struct ShowRequest {
  std::string identifier;
  std::string acts;                  ///< "right", "left" and "open", with commas between them
  std::string png;                   ///< a file for a picture in the end; empty: none
  std::string pictures;              ///< a folder for a picture after each act; empty: none
  std::shared_ptr<Display> display;  ///< null: a window only where a picture is wanted
  bool window = false;               ///< on the user's display, until the user closes it
  bool anyway = false;               ///< although a phone would not start the extension for this category
  double timeLimit = 30;
};

struct ShowOutcome : Outcome {
  std::optional<VorselKelp::JSONAny>
      carousel;  ///< position, title, body, image, arrows; absent or null: none
  std::optional<VorselKelp::JSONAny> opened;
  std::vector<VorselKelp::JSONAny> pictures;
  bool stopped = false;  ///< the extension stopped; the notification stays as it is
};

VorselKelp::Result<ShowOutcome> show(const Target& target, const ShowRequest& request);

}  // namespace brellixctl
