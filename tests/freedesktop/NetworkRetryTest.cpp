#include "application/NetworkRetry.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <set>

#include "freedesktop/BusTest.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::freedesktop {
namespace {

/// A system bus that takes connections and never answers.
class SilentBus {
 public:
  SilentBus() {
    sockaddr_un place{AF_UNIX, {}};
    (folder_ / "bus").copy(place.sun_path, sizeof place.sun_path - 1);
    EXPECT_EQ(::bind(socket_, reinterpret_cast<sockaddr*>(&place), sizeof place), 0);
    EXPECT_EQ(::listen(socket_, 8), 0);
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + folder_ / "bus").c_str(), 1);
  }
  SilentBus(const SilentBus&) = delete;
  SilentBus& operator=(const SilentBus&) = delete;
  ~SilentBus() { ::close(socket_); }

 private:
  const testing_support::TemporaryFolder folder_;
  const int socket_ = ::socket(AF_UNIX, SOCK_STREAM, 0);
};

class NetworkRetryTest : public BusTest {
 protected:
  void changeNetwork(bool better) {
    g_signal_emit_by_name(g_network_monitor_get_default(), "network-changed", better);
  }

  std::optional<SilentBus> systemBus_{std::in_place};
  int asked_ = 0;
  NetworkRetry retry_{queue, [this] { ++asked_; }};  // does not wait for the bus
};

TEST_F(NetworkRetryTest, AsksWhenTheNetworkChangesForTheBetter) {
  systemBus_.reset();
  waitUntil([&] {
    changeNetwork(false);
    EXPECT_EQ(asked_, 0);
    changeNetwork(true);
    return asked_ > 0;
  });
  retry_.end();
  changeNetwork(true);
  EXPECT_EQ(asked_, 1);
}

TEST_F(NetworkRetryTest, AsksLessAndLessOftenUntilItEnds) {
  std::set<double> shares;
  int count = 0;
  for (const double seconds : {10, 20, 40, 80, 160, 320, 600, 600, 600}) {
    const double left = *queue->nextDue() - clock->uptime();
    EXPECT_NEAR(left, seconds, 0.2 * seconds);
    shares.insert(left / seconds);
    clock->advance(left);
    queue->runUntilIdle();
    EXPECT_EQ(asked_, ++count);
  }
  EXPECT_GT(shares.size(), 1u) << "many machines would ask at once";
  retry_.end();
  clock->advance(3600);
  queue->runUntilIdle();
  EXPECT_EQ(asked_, count);
}

}  // namespace
}  // namespace VorselKelp::freedesktop
