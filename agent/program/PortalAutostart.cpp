#include <optional>
#include <utility>

#include "VorselKelpPosix/LineSink.h"
#include "program/Autostart.h"

namespace VorselKelp::agent {
namespace {

constexpr const char* settingName = "autostart";
constexpr const char* granted = "yes";
constexpr const char* unanswered = "asked";
constexpr const char* reasonForUser = "Notifications that come due are shown after you log in";

class PortalAutostart final : public Autostart {
 public:
  PortalAutostart(State& state, std::shared_ptr<freedesktop::BackgroundPortal> portal,
                  std::vector<std::string> commandLine)
      : state_(state), portal_(std::move(portal)), commandLine_(std::move(commandLine)) {
    const auto kept = state_.setting(settingName);
    if (!kept) posix::standardErrorLines()(kept.error().description);
    if (kept && *kept != unanswered) heard_ = *kept == granted;
  }

  void want(bool wanted) override {
    if (std::exchange(wanted_, wanted) != wanted) askWhenNeeded();
  }
  [[nodiscard]] bool idle() const override { return portal_->idle(); }

 private:
  void askWhenNeeded() {
    if (asking_ || heard_ == wanted_) return;
    asking_ = true;
    keep(unanswered);
    const bool wish = *wanted_;
    portal_->ask({wish, commandLine_, reasonForUser},
                 [this, wish, weak = std::weak_ptr(alive_)](const Result<bool>& answer) {
                   if (!weak.expired()) answered(wish, answer);
                 });
  }

  void answered(bool wish, const Result<bool>& answer) {
    asking_ = false;
    // Declined is heard as well: whoever has said no is not asked again for the same.
    if (answer) heard_ = wish;
    if (heard_) keep(*heard_ ? std::optional<std::string>(granted) : std::nullopt);
    if (!answer || *answer != wish)
      complain(wish, answer ? "it is not permitted" : answer.error().description);
    if (wanted_ != wish) askWhenNeeded();
  }

  static void complain(bool wish, const std::string& reason) {
    const std::string what =
        wish ? "Reminders will wait for the application: " : "The push agent starts with the session still: ";
    posix::standardErrorLines()(what + "the portal was asked for an autostart, and " + reason);
  }

  void keep(std::optional<std::string> value) {
    if (const auto status = state_.set({{settingName, std::move(value)}}); !status)
      posix::standardErrorLines()(status.error().description);
  }

  State& state_;
  const std::shared_ptr<freedesktop::BackgroundPortal> portal_;
  const std::vector<std::string> commandLine_;
  const std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
  std::optional<bool> heard_;  ///< what the portal has heard last; absent: nobody knows
  std::optional<bool> wanted_;
  bool asking_ = false;
};

}  // namespace

std::unique_ptr<Autostart> makePortalAutostart(State& state,
                                               std::shared_ptr<freedesktop::BackgroundPortal> portal,
                                               std::vector<std::string> commandLine) {
  return std::make_unique<PortalAutostart>(state, std::move(portal), std::move(commandLine));
}

}  // namespace VorselKelp::agent
