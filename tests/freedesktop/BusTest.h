#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <source_location>
#include <string>
#include <vector>

#include "VorselKelpTesting/ManualClock.h"
#include "VorselKelpTesting/ManualMainQueue.h"
#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {

/// A service on the test's bus: a connection of its own that serves objects under a name.
class BusService {
 public:
  /// `arguments` are a method's; the call answers through `invocation`, now or later.
  using Methods = std::function<void(const std::string& path, const std::string& method, GVariant* arguments,
                                     GDBusMethodInvocation* invocation)>;

  BusService(const std::string& address, std::string name);
  ~BusService();

  /// `interfaces` in the bus's introspection format.
  void serve(const std::string& path, const char* interfaces, Methods methods);
  void own();
  void emit(const std::string& path, const char* interface, const char* signal, GVariant* arguments);
  /// Everything that the bus has taken for it before has been called.
  void catchUp();

 private:
  const std::string name_;
  ObjectPtr<GDBusConnection> connection_;
  std::vector<guint> objects_;
};

/// A test with a bus of its own, and with time that stands still.
class BusTest : public testing::Test {
 protected:
  /// `services`: a folder of service files, by which the bus starts programs; empty: it starts none.
  explicit BusTest(const std::string& services = {});
  ~BusTest() override;

  /// Lets the bus and the main queue work until `done` answers true; ends the test after 20 seconds.
  void waitUntil(const std::function<bool()>& done,
                 std::source_location where = std::source_location::current());
  /// Lets time pass, each timer running at its time.
  void advance(int seconds);
  /// Waits until somebody owns the name, or nobody does.
  void waitForName(const std::string& name, bool owned);

  ObjectPtr<GTestDBus> daemon;
  std::string address;
  std::shared_ptr<testing_platform::ManualClock> clock = std::make_shared<testing_platform::ManualClock>();
  std::shared_ptr<testing_platform::ManualMainQueue> queue =
      std::make_shared<testing_platform::ManualMainQueue>(clock);
};

}  // namespace VorselKelp::freedesktop
