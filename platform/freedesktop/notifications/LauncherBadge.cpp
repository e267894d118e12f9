#include "VorselKelpFreedesktop/LauncherBadge.h"

#include <utility>

#include "VorselKelpPosix/LineSink.h"
#include "bus/BusText.h"
#include "bus/Connection.h"

namespace VorselKelp::freedesktop {
namespace {

VariantPtr updateArguments(const std::string& application, std::int64_t value) {
  constexpr std::size_t longestIdentifier = 256;  // bytes
  const auto entry = "application://" + busText(application, longestIdentifier) + ".desktop";
  GVariantBuilder properties;
  g_variant_builder_init(&properties, G_VARIANT_TYPE("a{sv}"));
  g_variant_builder_add(&properties, "{sv}", "count", g_variant_new_int64(value));
  g_variant_builder_add(&properties, "{sv}", "count-visible", g_variant_new_boolean(value > 0));
  return hold(g_variant_new("(s@a{sv})", entry.c_str(), g_variant_builder_end(&properties)));
}

class SignalledBadge final : public LauncherBadge {
 public:
  SignalledBadge(std::string application, std::shared_ptr<platform::MainQueue> mainQueue,
                 std::string busAddress)
      : application_(std::move(application)),
        mainQueue_(std::move(mainQueue)),
        connection_(std::make_shared<Connection>(BusKind::session, std::move(busAddress), mainQueue_)) {}

  void setBadge(std::int64_t value) override {
    mainQueue_->async([connection = connection_, application = application_, value] {
      connection->emitSignal(
          "/com/canonical/unity/launcherentry/1", "com.canonical.Unity.LauncherEntry", "Update",
          updateArguments(application, value), [](const Status& sent) {
            if (sent) return;
            posix::standardErrorLines()("The desktop does not show the badge: " + sent.error().description);
          });
    });
  }
  [[nodiscard]] bool idle() const override { return connection_->idle(); }

 private:
  const std::string application_;
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::shared_ptr<Connection> connection_;
};

}  // namespace

std::shared_ptr<LauncherBadge> makeLauncherBadge(std::string applicationIdentifier,
                                                 std::shared_ptr<platform::MainQueue> mainQueue,
                                                 std::string busAddress) {
  return std::make_shared<SignalledBadge>(std::move(applicationIdentifier), std::move(mainQueue),
                                          std::move(busAddress));
}

}  // namespace VorselKelp::freedesktop
