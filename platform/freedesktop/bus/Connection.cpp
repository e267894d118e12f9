#include "bus/Connection.h"

#include <algorithm>
#include <utility>

#include "bus/BusText.h"

namespace VorselKelp::freedesktop {
namespace {

using platform::MainQueue;

constexpr std::size_t longestMessage = 512;  // bytes; whoever sends it is a stranger

/// One line.
Error describe(ErrorPtr error) {
  if (g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED)) return {"there was no answer in time"};
  const TextPtr name(g_dbus_error_get_remote_error(error.get()));
  g_dbus_error_strip_remote_error(error.get());
  auto text = busText(error->message, longestMessage);
  std::ranges::replace_if(
      text, [](char c) { return g_ascii_iscntrl(c) != FALSE; }, ' ');
  return {name ? std::string(name.get()) + ": " + text : text};
}

/// Ends what uses it when the patience is over; cancelling what has ended by itself does nothing.
ObjectPtr<GCancellable> impatience(MainQueue& mainQueue) {
  ObjectPtr<GCancellable> cancellable(g_cancellable_new());
  ObjectPtr<GCancellable> shared(G_CANCELLABLE(g_object_ref(cancellable.get())));
  mainQueue.asyncAfter(Connection::patienceSeconds,
                       [shared = std::move(shared)] { g_cancellable_cancel(shared.get()); });
  return cancellable;
}

/// What waits for the end of an asynchronous operation of the library below: `end` reads its result there and
/// then, and the answer goes out as work of the main queue.
template <class Value>
struct Operation {
  std::shared_ptr<MainQueue> mainQueue;
  platform::UniqueFunction<void(Result<Value>)> answer;

  template <class End>
  static void finish(gpointer self, End end) {
    const std::unique_ptr<Operation> operation(static_cast<Operation*>(self));
    GError* error = nullptr;
    Value value = end(&error);
    auto result = error ? Result<Value>(describe(ErrorPtr(error))) : Result<Value>(std::move(value));
    operation->mainQueue->async([answer = std::move(operation->answer),
                                 result = std::move(result)]() mutable { answer(std::move(result)); });
  }
};

void callEnded(GObject* source, GAsyncResult* result, gpointer operation) {
  Operation<VariantPtr>::finish(operation, [&](GError** error) {
    return VariantPtr(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, error));
  });
}

void flushEnded(GObject* source, GAsyncResult* result, gpointer operation) {
  Operation<VariantPtr>::finish(operation, [&](GError** error) {
    g_dbus_connection_flush_finish(G_DBUS_CONNECTION(source), result, error);
    return VariantPtr();
  });
}

void openEnded(GObject*, GAsyncResult* result, gpointer operation) {
  Operation<ObjectPtr<GDBusConnection>>::finish(operation, [&](GError** error) {
    return ObjectPtr<GDBusConnection>(g_dbus_connection_new_for_address_finish(result, error));
  });
}

/// What a subscription carries along.
struct Delivery {
  std::shared_ptr<MainQueue> mainQueue;
  std::shared_ptr<const Connection::Handler> handler;
  const char* arguments;
};

void signalCame(GDBusConnection*, const gchar*, const gchar* path, const gchar*, const gchar*,
                GVariant* arguments, gpointer data) {
  const auto& delivery = *static_cast<Delivery*>(data);
  if (!g_variant_is_of_type(arguments, G_VARIANT_TYPE(delivery.arguments))) return;
  delivery.mainQueue->async([handler = delivery.handler, object = std::string(path),
                             values = hold(arguments)] { (*handler)(object, values.get()); });
}

}  // namespace

Connection::Connection(BusKind kind, std::string address, std::shared_ptr<platform::MainQueue> mainQueue)
    : kind_(kind), address_(std::move(address)), mainQueue_(std::move(mainQueue)) {}

Connection::~Connection() {
  forget();
  for (auto& use : waiting_) use(Error{"the connection to the bus was given up"});
}

void Connection::listen(const SignalMatch& match, Handler handler) {
  listeners_.push_back({match, std::make_shared<const Handler>(std::move(handler))});
}

void Connection::call(Method method, VariantPtr arguments, Reply reply) {
  whenOpen([queue = mainQueue_, method = std::move(method), arguments = std::move(arguments),
            reply = counted(std::move(reply))](Result<GDBusConnection*> connection) mutable {
    if (!connection) return reply(connection.error());
    g_dbus_connection_call(*connection, method.service, method.path.c_str(), method.interface, method.name,
                           arguments.get(), G_VARIANT_TYPE(method.answer), G_DBUS_CALL_FLAGS_NONE, G_MAXINT,
                           impatience(*queue).get(), callEnded,
                           new Operation<VariantPtr>{queue, std::move(reply)});
  });
}

void Connection::emitSignal(std::string path, const char* interface, const char* name, VariantPtr arguments,
                            platform::UniqueFunction<void(Status)> sent) {
  Reply reply = counted([sent = std::move(sent)](Result<VariantPtr> flushed) mutable {
    sent(flushed ? Status(Done{}) : Status(flushed.error()));
  });
  whenOpen([queue = mainQueue_, path = std::move(path), interface, name, arguments = std::move(arguments),
            reply = std::move(reply)](Result<GDBusConnection*> connection) mutable {
    if (!connection) return reply(connection.error());
    GError* error = nullptr;
    g_dbus_connection_emit_signal(*connection, nullptr, path.c_str(), interface, name, arguments.get(),
                                  &error);
    if (error) {
      queue->async(
          [reply = std::move(reply), refusal = describe(ErrorPtr(error))]() mutable { reply(refusal); });
      return;
    }
    g_dbus_connection_flush(*connection, impatience(*queue).get(), flushEnded,
                            new Operation<VariantPtr>{queue, std::move(reply)});
  });
}

Connection::Reply Connection::counted(Reply reply) {
  ++*underWay_;
  return [count = underWay_, reply = std::move(reply)](Result<VariantPtr> result) mutable {
    --*count;
    reply(std::move(result));
  };
}

void Connection::whenOpen(Opened use) {
  if (connection_ && g_dbus_connection_is_closed(connection_.get())) {
    forget();
    if (lost_) lost_();
  }
  if (connection_) return use(connection_.get());
  waiting_.push_back(std::move(use));
  if (!std::exchange(opening_, true)) open();
}

void Connection::open() {
  auto found = address_.empty() ? busAddress(kind_) : Result<std::string>(address_);
  auto done = [weak = weak_from_this()](Result<ObjectPtr<GDBusConnection>> result) {
    if (const auto self = weak.lock()) self->opened(std::move(result));
  };
  if (!found) {
    mainQueue_->async([done, error = found.error()] { done(error); });
    return;
  }
  g_dbus_connection_new_for_address(
      found->c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, impatience(*mainQueue_).get(), openEnded,
      new Operation<ObjectPtr<GDBusConnection>>{mainQueue_, std::move(done)});
}

void Connection::opened(Result<ObjectPtr<GDBusConnection>> result) {
  opening_ = false;
  if (result) {
    connection_ = *std::move(result);
    for (const auto& listener : listeners_) subscribe(listener);
  }
  for (auto& use : std::exchange(waiting_, {})) {
    use(result ? Result<GDBusConnection*>(connection_.get()) : Result<GDBusConnection*>(result.error()));
  }
}

void Connection::subscribe(const Listener& listener) {
  const auto& match = listener.match;
  subscriptions_.push_back(g_dbus_connection_signal_subscribe(
      connection_.get(), match.sender, match.interface, match.name, match.path, match.firstArgument,
      G_DBUS_SIGNAL_FLAGS_NONE, signalCame, new Delivery{mainQueue_, listener.handler, match.arguments},
      [](gpointer delivery) { delete static_cast<Delivery*>(delivery); }));
}

void Connection::forget() {
  if (!connection_) return;
  for (const auto subscription : std::exchange(subscriptions_, {}))
    g_dbus_connection_signal_unsubscribe(connection_.get(), subscription);
  g_dbus_connection_close(connection_.get(), nullptr, nullptr, nullptr);
  connection_.reset();
}

}  // namespace VorselKelp::freedesktop
