#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <string_view>

#include "brellixctl/Commands.h"
#include "brellixctl/Numbers.h"
#include "brellixctl/device/DeviceOptions.h"
#include "brellixctl/fleet/FleetOptions.h"
#include "brellixctl/gateway/GatewayCommand.h"
#include "brellixctl/webpush/Options.h"

namespace {

using namespace brellixctl;

constexpr double century = 100 * 365.25 * 86400;  // seconds

class CommandLine {
 public:
  CommandLine() {
    app_.require_subcommand(1);
    app_.set_version_flag("--version", "brellixctl " BRELLIXCTL_VERSION);
    app_.fallthrough();
    app_.add_option("--home", common_.home, "Folder of the simulated device")->type_name("DIR");
    app_.add_option("--app", common_.manifest, "The application's manifest")->type_name("FILE");
    app_.add_flag("--json", common_.json, "Print JSON for a script");
    addDemo();
    addServe();
    addLaunch();
    addPush();
    addTap();
    addShow();
    addNotify();
    addInspection();
    addLint();
    addTry();
    addFleet();
    addWebPush();
    addGatewayOptions(
        *add("gateway", "The provider protocol of phones' pushes, towards devices here and desktops",
             [this] { return runGateway(common_, gateway_); }),
        gateway_);
  }

  int run(int argc, char** argv) {
    // Also of a command line that can't be read.
    answerInJSON(std::any_of(argv, argv + argc, [](std::string_view word) { return word == "--json"; }));
    try {
      app_.parse(argc, argv);
    } catch (const CLI::CallForHelp& help) {
      return app_.exit(help);
    } catch (const CLI::CallForAllHelp& help) {
      return app_.exit(help);
    } catch (const CLI::CallForVersion& version) {
      return app_.exit(version);
    } catch (const CLI::ParseError& error) {
      return fail(VorselKelp::Error{explain(error) + "; see brellixctl --help", wrongUsage});
    }
    return command_();
  }

 private:
  /// The parser misses a command where it was given one that it does not know.
  [[nodiscard]] std::string explain(const CLI::ParseError& error) const {
    const auto words = app_.remaining();
    const auto word = std::ranges::find_if(words, [](const auto& each) { return !each.starts_with('-'); });
    if (!app_.get_subcommands().empty() || word == words.end()) return error.what();
    return "no such command: " + *word;
  }

  CLI::App* add(const char* name, const char* what, std::function<int()> command) {
    auto* added = app_.add_subcommand(name, what);
    added->callback([this, command = std::move(command)] { command_ = command; });
    return added;
  }

  void addDemo() {
    auto* demo =
        add("demo", "The whole road of one notification, with real processes and a server of its own",
            [this] { return runDemo(common_, demo_); });
    demo->add_flag("--screens", demo_.screens, "With windows; on a private display where the user has none");
    demo->add_option("--report", demo_.report, "Write an HTML page that tells the journey")
        ->type_name("FILE");
  }

  void addServe() {
    auto* serve = add("serve", "A collection server that shows every request it receives",
                      [this] { return runServe(common_, serve_); });
    serve->add_option("--port", serve_.port, "Port on the loopback interface; 0 for any free one")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    serve->add_option("--log", serve_.log, "Write the requests here, one JSON object a line")
        ->type_name("FILE");
    serve->add_option("--document", serve_.document, "The remote configuration to serve")->type_name("FILE");
    serve->add_option("--script", serve_.script, "The permission page's script to serve")->type_name("FILE");
    serve->add_option("--status", serve_.statuses, "Answer this path with this code; may be repeated")
        ->type_name("PATH=CODE")
        ->allow_extra_args(false);
  }

  void addLaunch() {
    auto* start =
        add("launch", "One start of the application", [this] { return runLaunch(common_, launch_); });
    start->add_option("--answer", launch_.answer, "What the user answers when asked for the permission")
        ->check(CLI::IsMember({"allow", "deny"}));
    start->add_option("--prompt", launch_.prompt, "What the user answers on the publisher's permission page")
        ->check(CLI::IsMember({"ok", "cancel"}));
    start->add_flag("--window", launch_.window,
                    "In a window that stays until it is closed, or the time ends");
    start->add_option("--script", launch_.script, "Serve this file as that page's script")->type_name("FILE");
    start->add_option("--call", launch_.calls, "Call a public operation with a JSON list; may be repeated")
        ->type_name("NAME=JSON")
        ->allow_extra_args(false);
    start
        ->add_option(
            "--beacon", launch_.beacons,
            "Once it has started: enter:UUID, exit:UUID, inside:UUID or range:UUID,UUID; may be repeated")
        ->type_name("EVENT")
        ->allow_extra_args(false);
    addTimeLimit(start, launch_.timeLimit);
  }

  void addPush() {
    auto* deliver =
        add("push", "Deliver one remote notification", [this] { return runPush(common_, push_); });
    deliver->add_option("PAYLOAD", push_.payloadPath, "The payload, a JSON file; - for standard input")
        ->required();
    deliver->add_option("--id", push_.identifier, "The notification's identifier")->type_name("ID");
    addTimeLimit(deliver, push_.timeLimit);
  }

  void addTap() {
    auto* open = add("tap", "The user taps a notification or one of its buttons", [this] {
      tap_.handle = !noHandle_;
      if (actionOption_->count() > 0) tap_.action = action_;
      return runTap(common_, tap_);
    });
    open->add_option("ID", tap_.identifier, "The notification's identifier")->required();
    actionOption_ = open->add_option("--action", action_, "The button's identifier")->type_name("A");
    open->add_flag("--no-handle", noHandle_, "The application opens the link itself");
  }

  void addNotify() {
    auto* told = add("notify", "Show a delivered notification on this desktop, and pass on the tap",
                     [this] { return runNotify(common_, notify_); });
    told->add_option("ID", notify_.identifier, "The notification's identifier")->required();
    addTimeLimit(told, notify_.timeLimit);
  }

  void addShow() {
    auto* shown = add("show", "The content extension's carousel of a delivered notification",
                      [this] { return runShow(common_, show_); });
    shown->add_option("ID", show_.identifier, "The notification's identifier")->required();
    shown->add_option("--do", show_.acts, "What the user does: right, left and open, with commas between")
        ->type_name("ACTS");
    shown->add_option("--png", show_.png, "Write a picture of the area in the end")->type_name("FILE");
    shown->add_flag(
        "--anyway", show_.anyway,
        "Also when its category is none of the extension's, for which a phone would not start it");
    shown->add_flag("--window", show_.window, "In a window that stays until it is closed, or the time ends");
    addTimeLimit(shown, show_.timeLimit);
  }

  void addInspection() {
    add("store", "What the stores of the application hold", [this] { return runStore(common_); });
    add("doctor", "What is wrong with the application's set-up, and how to mend it",
        [this] { return runDoctor(common_, application_); })
        ->add_option("--application", application_, "One that is installed on this desktop")
        ->type_name("ID");
    addDeviceOptions(*add("device", "Turn the device off or on, or remove the application from it",
                          [this] { return runDevice(common_, device_); }),
                     device_);
    add("badge", "The number on the application's icon", [this] { return runBadge(common_); });
    auto* list = add("notifications", "What the notification centre holds",
                     [this] { return runNotifications(common_, advance_); });
    list->add_option("--advance", advance_, "Move the device's clock on first")
        ->type_name("SECONDS")
        ->check(numberUpTo(century, "seconds"));
  }

  void addLint() {
    auto* lint = add("lint", "What a payload will do and what is wrong with it, without doing it",
                     [this] { return runLint(lint_); });
    lint->add_option("PAYLOAD", lint_.payloadPath, "The payload, a JSON file; - for standard input")
        ->required();
    lint->add_option("--id", lint_.identifier, "The notification's identifier")->type_name("ID");
    lint->add_flag("--strict", lint_.strict, "Fail for warnings too");
    auto* schema = add("schema", "The JSON Schema of a payload or of a body that is sent",
                       [this] { return runSchema(schema_); });
    schema->add_option("NAME", schema_, "push, campaign, activity, users, configuration or ad")->required();
  }

  void addTry() {
    auto* tried = add("try", "Deliver a payload, touch all of it, and compare with what lint foretold",
                      [this] { return runTry(common_, try_); });
    tried->add_option("PAYLOAD", try_.payloadPath, "The payload, a JSON file; - for standard input")
        ->required();
    tried->add_option("--report", try_.report, "Write an HTML page with both sides")->type_name("FILE");
    tried->add_flag("--anywhere", try_.anywhere,
                    "Let the payload's requests go to its own servers, not to stand-ins on this machine");
  }

  void addWebPush() {
    addSendOptions(*add("send", "Send a payload to a subscription, encrypted, through its push service",
                        [this] { return runSend(send_); }),
                   send_);
    addVapidOptions(
        *add("vapid", "A sender's keys: new ones, or the forms of one", [this] { return runVapid(vapid_); }),
        vapid_);
  }

  void addFleet() {
#ifdef BRELLIXCTL_FLEET
    addFleetOptions(*add("fleet", "Many devices at once, to load-test a collection server",
                         [this] { return runFleet(common_, fleet_); }),
                    fleet_);
#endif
  }

  static void addTimeLimit(CLI::App* command, double& seconds) {
    command->add_option("--time-limit", seconds, "Seconds that the process has")
        ->type_name("S")
        ->check(numberUpTo(86400, "seconds"))
        ->capture_default_str();
  }

  CLI::App app_{"A phone's view of a push notification, on a desk", "brellixctl"};
  std::function<int()> command_;
  CommonOptions common_;
  DemoRequest demo_;
  ServeOptions serve_;
  LaunchRequest launch_;
  PushRequest push_;
  TapRequest tap_;
  TapRequest notify_;
  ShowRequest show_;
  LintRequest lint_;
  TryRequest try_;
  FleetRequest fleet_;
  DeviceRequest device_;
  SendRequest send_;
  VapidRequest vapid_;
  GatewayRequest gateway_;
  std::string schema_;
  std::string application_;
  double advance_ = 0;
  std::string action_;
  CLI::Option* actionOption_ = nullptr;
  bool noHandle_ = false;
};

}  // namespace

int main(int argc, char** argv) {
  return CommandLine().run(argc, argv);
}
