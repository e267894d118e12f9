#include "VorselKelpFreedesktop/LauncherBadge.h"

#include <gmock/gmock.h>

#include <vector>

#include "bus/Connection.h"
#include "freedesktop/BusTest.h"

namespace VorselKelp::freedesktop {
namespace {

class LauncherBadgeTest : public BusTest {};

TEST_F(LauncherBadgeTest, TellsDocksTheNumber) {
  std::vector<std::string> heard;
  const auto dock = std::make_shared<Connection>(BusKind::session, address, queue);
  dock->listen({nullptr, "com.canonical.Unity.LauncherEntry", "Update", nullptr, nullptr, "(sa{sv})"},
               [&](const std::string&, GVariant* arguments) {
                 heard.emplace_back(TextPtr(g_variant_print(arguments, TRUE)).get());
               });
  bool listening = false;
  dock->call({"org.freedesktop.DBus", "/", "org.freedesktop.DBus.Peer", "Ping"}, nullptr,
             [&](const Result<VariantPtr>& reply) { listening = reply.ok(); });
  waitUntil([&] { return listening; });

  const auto badge = makeLauncherBadge("com.example.news", queue);  // as the environment says
  for (const std::int64_t value : {3LL, 0LL, -5LL}) badge->setBadge(value);
  queue->runUntilIdle();
  EXPECT_FALSE(badge->idle());
  waitUntil([&] { return badge->idle() && heard.size() == 3; });
  const std::string begin = "('application://com.example.news.desktop', {'count': <int64 ";
  EXPECT_THAT(heard, testing::ElementsAre(begin + "3>, 'count-visible': <true>})",
                                          begin + "0>, 'count-visible': <false>})",
                                          begin + "-5>, 'count-visible': <false>})"));
}

TEST_F(LauncherBadgeTest, ComplainsWhenThereIsNoBus) {
  const auto badge = makeLauncherBadge("com.example.news", queue, "unix:path=/nonexistent/bus");
  testing::internal::CaptureStderr();
  badge->setBadge(1);
  queue->runUntilIdle();
  waitUntil([&] { return badge->idle(); });
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("does not show the badge: "));
}

}  // namespace
}  // namespace VorselKelp::freedesktop
