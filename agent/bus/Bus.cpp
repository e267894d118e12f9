#include "bus/Bus.h"

#include <utility>
#include <vector>

#include "bus/Text.h"

namespace VorselKelp::agent {
namespace {

using freedesktop::ErrorPtr;
using freedesktop::TextPtr;

constexpr const char* daemonName = "org.freedesktop.DBus";
constexpr const char* daemonPath = "/org/freedesktop/DBus";
constexpr std::size_t longestMessage = 512;  // bytes; whoever sends an error is a stranger

/// One line.
Error describe(ErrorPtr error) {
  const TextPtr name(g_dbus_error_get_remote_error(error.get()));
  g_dbus_error_strip_remote_error(error.get());
  auto text = shortText(error->message, longestMessage);
  for (auto& c : text) {
    if (g_ascii_iscntrl(c)) c = ' ';
  }
  return {name ? std::string(name.get()) + ": " + text : text};
}

void ended(GObject* source, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<Bus::Reply> reply(static_cast<Bus::Reply*>(data));
  GError* error = nullptr;
  VariantPtr value(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
  if (error) return (*reply)(describe(ErrorPtr(error)));
  (*reply)(std::move(value));
}

using Heard = std::function<void(const std::string&, const std::string&)>;

void ownerChanged(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                  GVariant* arguments, gpointer data) {
  if (!g_variant_is_of_type(arguments, G_VARIANT_TYPE("(sss)"))) return;
  const char* name = nullptr;
  const char* owner = nullptr;
  g_variant_get(arguments, "(&s&s&s)", &name, nullptr, &owner);
  (*static_cast<Heard*>(data))(name, owner);
}

void answerCall(GDBusMethodInvocation* invocation, const Result<VariantPtr>& answer) {
  if (!answer) {
    g_dbus_method_invocation_return_dbus_error(invocation, "org.freedesktop.DBus.Error.Failed",
                                               answer.error().description.c_str());
    return;
  }
  g_dbus_method_invocation_return_value(invocation, answer->get());
}

}  // namespace

struct Bus::Served {
  Handler handler;

  static void called(GDBusConnection*, const gchar* sender, const gchar*, const gchar*, const gchar* method,
                     GVariant* arguments, GDBusMethodInvocation* invocation, gpointer self) {
    static_cast<Served*>(self)->handler(
        {sender, method, arguments,
         [invocation](const Result<VariantPtr>& answer) { answerCall(invocation, answer); }});
  }
};

Result<std::unique_ptr<Bus>> Bus::connect(const std::string& address) {
  GError* error = nullptr;
  const TextPtr found(address.empty() ? g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, &error)
                                      : g_strdup(address.c_str()));
  if (!found) return Error{"There is no session bus: " + describe(ErrorPtr(error)).description};
  ObjectPtr<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
      found.get(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, &error));
  if (!connection) return Error{"Cannot reach the session bus: " + describe(ErrorPtr(error)).description};
  g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
  return std::unique_ptr<Bus>(new Bus(std::move(connection)));
}

Bus::Bus(ObjectPtr<GDBusConnection> connection) : connection_(std::move(connection)) {
  g_signal_connect(connection_.get(), "closed",
                   G_CALLBACK(+[](GDBusConnection*, gboolean, GError*, Bus* self) {
                     if (self->closed_) self->closed_();
                   }),
                   this);
}

Bus::~Bus() {
  g_signal_handlers_disconnect_by_data(connection_.get(), this);
  for (const auto object : objects_) g_dbus_connection_unregister_object(connection_.get(), object);
  for (const auto subscription : subscriptions_)
    g_dbus_connection_signal_unsubscribe(connection_.get(), subscription);
}

Status Bus::serve(const char* path, const char* xml, Handler handler) {
  static constexpr GDBusInterfaceVTable table{Served::called, nullptr, nullptr, {}};
  GError* error = nullptr;
  auto* node = g_dbus_node_info_new_for_xml(xml, &error);
  if (!node) return describe(ErrorPtr(error));
  const auto object = g_dbus_connection_register_object(
      connection_.get(), path, node->interfaces[0], &table, new Served{std::move(handler)},
      [](gpointer served) { delete static_cast<Served*>(served); }, &error);
  g_dbus_node_info_unref(node);
  if (object == 0) return describe(ErrorPtr(error));
  objects_.push_back(object);
  return Done{};
}

void Bus::emitSignal(const char* path, const char* interface, const char* name, GVariant* arguments) {
  g_dbus_connection_emit_signal(connection_.get(), nullptr, path, interface, name, arguments, nullptr);
}

void Bus::requestName(const std::string& name, platform::UniqueFunction<void(Result<bool>)> answer) {
  constexpr guint32 doNotQueue = 4;
  constexpr guint32 primaryOwner = 1;
  call(daemonName, daemonPath, daemonName, "RequestName", g_variant_new("(su)", name.c_str(), doNotQueue),
       "(u)", [answer = std::move(answer)](Result<VariantPtr> reply) mutable {
         if (!reply) return answer(reply.error());
         guint32 outcome = 0;
         g_variant_get(reply->get(), "(u)", &outcome);
         answer(outcome == primaryOwner);
       });
}

void Bus::releaseName(const std::string& name, platform::UniqueFunction<void()> answer) {
  call(daemonName, daemonPath, daemonName, "ReleaseName", g_variant_new("(s)", name.c_str()), "(u)",
       [answer = std::move(answer)](const Result<VariantPtr>&) mutable { answer(); });
}

void Bus::call(const char* service, const std::string& path, const char* interface, const char* method,
               GVariant* arguments, const char* answerType, Reply reply, int seconds) {
  g_dbus_connection_call(connection_.get(), service, path.c_str(), interface, method, arguments,
                         G_VARIANT_TYPE(answerType), G_DBUS_CALL_FLAGS_NONE,
                         seconds > 0 ? seconds * 1000 : G_MAXINT, nullptr, ended,
                         new Reply(std::move(reply)));
}

void Bus::findOwner(const std::string& name, platform::UniqueFunction<void(std::string)> found) {
  call(daemonName, daemonPath, daemonName, "GetNameOwner", g_variant_new("(s)", name.c_str()), "(s)",
       [found = std::move(found)](const Result<VariantPtr>& reply) mutable {
         const char* owner = "";
         if (reply) g_variant_get(reply->get(), "(&s)", &owner);
         found(owner);
       });
}

void Bus::watchOwners(const char* name, bool below, Heard heard) {
  subscriptions_.push_back(g_dbus_connection_signal_subscribe(
      connection_.get(), daemonName, daemonName, "NameOwnerChanged", daemonPath, name,
      below ? G_DBUS_SIGNAL_FLAGS_MATCH_ARG0_NAMESPACE : G_DBUS_SIGNAL_FLAGS_NONE, ownerChanged,
      new Heard(std::move(heard)), [](gpointer data) { delete static_cast<Heard*>(data); }));
}

void Bus::whenClosed(std::function<void()> closed) {
  closed_ = std::move(closed);
}

void Bus::flush(platform::UniqueFunction<void()> done) {
  using Flushed = platform::UniqueFunction<void()>;
  g_dbus_connection_flush(
      connection_.get(), nullptr,
      [](GObject* source, GAsyncResult* result, gpointer data) {
        const std::unique_ptr<Flushed> flushed(static_cast<Flushed*>(data));
        g_dbus_connection_flush_finish(G_DBUS_CONNECTION(source), result, nullptr);
        (*flushed)();
      },
      new Flushed(std::move(done)));
}

std::string Bus::guid() const {
  const char* guid = g_dbus_connection_get_guid(connection_.get());
  return guid ? guid : "";
}

}  // namespace VorselKelp::agent
