#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/MainQueue.h"
#include "bus/BusAddress.h"
#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {

/// Which method of whom; `answer` is the type of what it must answer with.
struct Method {
  const char* service;
  std::string path;
  const char* interface;
  const char* name;
  const char* answer = "()";
};

/// Which signals of whom; a signal whose arguments are of another type than `arguments` is dropped. Null
/// where any will do.
struct SignalMatch {
  const char* sender;
  const char* interface;
  const char* name;
  const char* path;
  const char* firstArgument;
  const char* arguments;
};

/// One connection to a message bus: opened when it is first used, and opened again by the next use after it
/// broke. It needs the process's default main context to be run by the main thread.
///
/// Main thread only, the destructor apart. Everything comes back as work of the main queue. Nothing blocks:
/// what takes longer than `patienceSeconds` of the queue's time ends with an error.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  static constexpr double patienceSeconds = 10;
  /// An error that was sent by the other side begins with the error's name on the bus.
  using Reply = platform::UniqueFunction<void(Result<VariantPtr>)>;
  using Handler = std::function<void(const std::string& path, GVariant* arguments)>;

  /// `address` empty: where the bus of this kind is to be found.
  Connection(BusKind kind, std::string address, std::shared_ptr<platform::MainQueue> mainQueue);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /// To be called before anything is sent; it opens nothing. The handler may still run once more when the
  /// connection is gone.
  void listen(const SignalMatch& match, Handler handler);
  /// `handler` hears that the bus had closed the connection, before the next use opens another. It may still
  /// run once more when this object is gone.
  void whenLost(std::function<void()> handler) { lost_ = std::move(handler); }
  /// `reply` is called exactly once, even when the connection is gone by then.
  void call(Method method, VariantPtr arguments, Reply reply);
  /// Tells everybody on the bus; `sent` is called exactly once, when the bus has the signal.
  void emitSignal(std::string path, const char* interface, const char* name, VariantPtr arguments,
                  platform::UniqueFunction<void(Status)> sent);
  /// Whether everything that was sent has been replied to.
  [[nodiscard]] bool idle() const { return *underWay_ == 0; }

 private:
  struct Listener {
    SignalMatch match;
    std::shared_ptr<const Handler> handler;
  };
  using Opened = platform::UniqueFunction<void(Result<GDBusConnection*>)>;

  void whenOpen(Opened use);
  void open();
  void opened(Result<ObjectPtr<GDBusConnection>> result);
  void subscribe(const Listener& listener);
  void forget();
  [[nodiscard]] Reply counted(Reply reply);

  const BusKind kind_;
  const std::string address_;
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::shared_ptr<std::size_t> underWay_ = std::make_shared<std::size_t>(0);
  std::function<void()> lost_;
  std::vector<Listener> listeners_;
  std::vector<unsigned> subscriptions_;
  std::vector<Opened> waiting_;
  bool opening_ = false;
  ObjectPtr<GDBusConnection> connection_;
};

}  // namespace VorselKelp::freedesktop
