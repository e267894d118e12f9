#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "brellixctl/Answer.h"
#include "brellixctl/Operations.h"

namespace brellixctl {

/// What the command line says for all commands.
struct CommonOptions {
  std::string home;
  std::string manifest;
  bool json = false;
};

struct DemoRequest {
  bool screens = false;  ///< with windows
  std::string report;    ///< an HTML file; empty: none
};

struct ServeOptions {
  int port = 8080;
  std::string log;
  std::string document;
  std::string script;
  std::vector<std::string> statuses;  ///< PATH=CODE
};

struct FleetRequest {
  std::size_t devices = 1000;
  std::size_t pushes = 1;             ///< to each device
  std::string server;                 ///< empty: one of its own
  bool anywhere = false;              ///< requests may leave the server
  std::vector<std::string> payloads;  ///< files; none: a sample
  std::size_t connections = 64;
  double opened = 10;    ///< percent
  double rate = 0;       ///< launches and notifications a second; 0: as many as the server keeps up with
  double duration = 0;   ///< seconds of notifications, in place of `pushes`; 0: none
  double failAbove = 0;  ///< percent of the requests that may fail
  bool gateway = false;  ///< the notifications come from the publisher's own server
  std::uint16_t port = 2197;
  bool open = false;   ///< that server needs no token
  std::string tokens;  ///< a file for the devices' tokens; empty: none
};

struct LintRequest {
  std::string payloadPath;
  std::string identifier = "notification";  ///< the notification's
  bool strict = false;                      ///< warnings count as failures
};

struct DeviceRequest {
  std::string action;  ///< "on", "off" or "uninstall"; empty: how it stands
};

struct TryRequest {
  std::string payloadPath;
  std::string report;     ///< an HTML file; empty: none
  bool anywhere = false;  ///< the payload's requests may leave this machine
};

struct SendRequest {
  std::string subscription;  ///< its text, its digits, or a file
  std::string payloadPath;
  std::string vapid;           ///< the sender's key or its file; empty: the sender stays unknown
  std::string subject;         ///< how to reach the sender; goes with `vapid`
  std::uint32_t ttl = 604800;  ///< seconds
  std::string urgency;         ///< empty: the push service's own
  std::string collapse;        ///< identifier; empty: none
};

struct VapidRequest {
  std::string key;       ///< in any form or a file; empty: a new one
  std::string out;       ///< a new file; empty: the private key is shown
  std::string endpoint;  ///< empty: no header is asked for
  std::string subject;   ///< goes with `endpoint`
};

// Each runs one command and returns the exit status: 0, 1 when the operation failed, 2 for wrong usage. The
// result goes to standard output, everything else to standard error. What a script reads is one JSON value,
// an object with an "error" when the command failed.

int runDemo(const CommonOptions& common, const DemoRequest& request);
/// Needs neither device nor application.
int runFleet(const CommonOptions& common, const FleetRequest& request);
int runServe(const CommonOptions& common, const ServeOptions& options);
int runLaunch(const CommonOptions& common, const LaunchRequest& request);
int runPush(const CommonOptions& common, const PushRequest& request);
int runShow(const CommonOptions& common, const ShowRequest& request);
/// Shows the notification on the user's own desktop and hands on what the user does with it there.
int runNotify(const CommonOptions& common, TapRequest request);
int runTap(const CommonOptions& common, const TapRequest& request);
int runStore(const CommonOptions& common);
/// `advance`: seconds by which the device's clock is moved on first; what is due then is delivered.
int runNotifications(const CommonOptions& common, double advance);

/// Says for each fault of application, device and servers what it is and how to mend it.
/// `application`: an identifier, of one that is installed on this desktop; empty: the simulated device's.
int runDoctor(const CommonOptions& common, const std::string& application);
/// Turns the device off or on, or removes the application.
int runDevice(const CommonOptions& common, const DeviceRequest& request);
int runBadge(const CommonOptions& common);
/// Needs neither device nor application.
int runLint(const LintRequest& request);
/// Needs no device; without a manifest the example application is taken.
int runTry(const CommonOptions& common, const TryRequest& request);
/// Sends a payload to any receiver of Web Push. Needs neither device nor application.
int runSend(const SendRequest& request);
/// A sender's keys.
int runVapid(const VapidRequest& request);
int runSchema(const std::string& name);

}  // namespace brellixctl
