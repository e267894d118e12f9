#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <set>
#include <thread>

#include "VorselKelpPosix/Services.h"
#include "VorselKelpSimulator/Runtime.h"
#include "posix/support/Variable.h"

namespace VorselKelp::simulator {
namespace {

using testing_support::Variable;

TEST(Device, TakesMachineLanguageAndTimeZoneFromManifestAndEnvironment) {
  Manifest manifest;
  manifest.machine = "iPhone10,4";
  const auto device = makeDevice(manifest);
  {
    const Variable none("SIMULATOR_MODEL_IDENTIFIER", nullptr);
    EXPECT_EQ(device->machineIdentifier(), "iPhone10,4");
  }
  const Variable simulated("SIMULATOR_MODEL_IDENTIFIER", "iPad8,12");
  EXPECT_EQ(device->environmentVariable("SIMULATOR_MODEL_IDENTIFIER"), "iPad8,12");
  EXPECT_EQ(device->machineIdentifier(), "iPhone10,4");

  const Variable all("LC_ALL", nullptr);
  const Variable messages("LC_MESSAGES", nullptr);
  const std::array<std::array<const char*, 2>, 4> locales{
      {{"de_DE.UTF-8", "de"}, {"pt@latin", "pt"}, {"C.UTF-8", "en"}, {"", "en"}}};
  for (const auto& [locale, language] : locales) {
    const Variable lang("LANG", locale);
    EXPECT_EQ(device->languageCode(), language) << locale;
  }
  const Variable zone("TZ", "XXX-05:30");
  ::tzset();
  EXPECT_EQ(device->secondsFromGMT(), 19800);
}

TEST(Clock, EndsWaitsBySignalOrTime) {
  const auto clock = posix::makeClock();
  EXPECT_NEAR(clock->now(), static_cast<double>(std::time(nullptr)), 5);
  const auto semaphore = clock->makeSemaphore();
  EXPECT_FALSE(semaphore->wait(0));
  semaphore->signal();
  EXPECT_TRUE(semaphore->wait(0));
  EXPECT_FALSE(semaphore->wait(0));
  std::thread other([&] { semaphore->signal(); });
  EXPECT_TRUE(semaphore->wait(30));
  other.join();
}

TEST(Random, StaysBelowItsBoundAndReachesEveryValue) {
  const auto random = posix::makeRandom();
  std::set<std::uint32_t> seen;
  for (int i = 0; i < 2000; ++i) seen.insert(random->below(7));
  EXPECT_EQ(seen, (std::set<std::uint32_t>{0, 1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(random->below(1), 0u);
}

TEST(Console, KeepsTextsOfSeveralThreadsApart) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  const auto console = posix::makeConsole(ends[1]);
  const std::string longText(300, 'a');
  std::thread one([&] {
    for (int i = 0; i < 50; ++i) console->print(longText);
  });
  for (int i = 0; i < 50; ++i) console->print("b\nb");
  one.join();
  ::close(ends[1]);
  std::string all;
  std::array<char, 4096> buffer{};
  for (ssize_t got = 0; (got = ::read(ends[0], buffer.data(), buffer.size())) > 0;) {
    all.append(buffer.data(), static_cast<std::size_t>(got));
  }
  ::close(ends[0]);
  std::size_t longs = 0, shorts = 0;
  for (std::size_t at = 0; at < all.size();) {
    const bool isLong = all.compare(at, 301, longText + "\n") == 0;
    ASSERT_TRUE(isLong || all.compare(at, 4, "b\nb\n") == 0) << "mixed at " << at;
    ++(isLong ? longs : shorts);
    at += isLong ? 301 : 4;
  }
  EXPECT_EQ(longs, 50u);
  EXPECT_EQ(shorts, 50u);
}

}  // namespace
}  // namespace VorselKelp::simulator
