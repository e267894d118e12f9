#include "agent/AgentClient.h"

#include <utility>

#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr const char* daemonName = "org.freedesktop.DBus";
constexpr const char* agentPath = "/org/vorselkelp/PushAgent";
constexpr const char* agentInterface = "org.vorselkelp.PushAgent1";

std::string textIn(GVariant* members, const char* key) {
  const VariantPtr value(g_variant_lookup_value(members, key, G_VARIANT_TYPE_STRING));
  return value ? g_variant_get_string(value.get(), nullptr) : "";
}

/// An agent of another version has no such interface.
Error describe(const Error& error) {
  for (const char* name : {"UnknownMethod", "UnknownInterface", "UnknownObject"}) {
    if (error.description.starts_with(std::string("org.freedesktop.DBus.Error.") + name + ":"))
      return Error{"The push agent is of a version that this application does not know"};
  }
  return Error{"The push agent does not answer: " + error.description};
}

bool contains(GVariant* names, const std::string& name) {
  GVariantIter* all = nullptr;
  const char* each = nullptr;
  bool found = false;
  g_variant_get(names, "(as)", &all);
  while (g_variant_iter_loop(all, "&s", &each)) found = found || name == each;
  g_variant_iter_free(all);
  return found;
}

}  // namespace

AgentClient::AgentClient(const std::string& application, std::string busAddress,
                         std::shared_ptr<platform::MainQueue> mainQueue, AgentEvents events)
    : name_(application + ".Push"),
      mainQueue_(mainQueue),
      events_(std::move(events)),
      connection_(
          std::make_shared<Connection>(BusKind::session, std::move(busAddress), std::move(mainQueue))) {}

void AgentClient::find(platform::UniqueFunction<void(bool)> found) {
  connection_->listen({name_.c_str(), agentInterface, "Changed", agentPath, nullptr, "(a{sv})"},
                      [weak = weak_from_this()](const std::string&, GVariant* arguments) {
                        const VariantPtr condition(g_variant_get_child_value(arguments, 0));
                        if (const auto self = weak.lock()) self->note(condition.get());
                      });
  connection_->call({daemonName, "/org/freedesktop/DBus", daemonName, "ListActivatableNames", "(as)"},
                    nullptr,
                    [self = shared_from_this(), found = std::move(found)](Result<VariantPtr> names) mutable {
                      self->listed(std::move(names), std::move(found));
                    });
}

void AgentClient::listed(Result<VariantPtr> names, platform::UniqueFunction<void(bool)> found) {
  if (!names) reason_ = names.error().description;
  if (!names || contains(names->get(), name_)) return settle(names.ok(), std::move(found));
  // Just installed, perhaps: a bus looks for new files when it is to start what it does not know.
  connection_->call(
      {daemonName, "/org/freedesktop/DBus", daemonName, "StartServiceByName", "(u)"},
      hold(g_variant_new("(su)", name_.c_str(), 0U)),
      [self = shared_from_this(), found = std::move(found)](Result<VariantPtr> started) mutable {
        self->settle(started.ok(), std::move(found));
      });
}

void AgentClient::settle(bool there, platform::UniqueFunction<void(bool)> found) {
  there_ = there;
  found(there);
  if (wanted_) ask();
}

void AgentClient::begin() {
  wanted_ = true;
  subscription_.clear();  // whoever asks hears it again
  if (there_) ask();
}

void AgentClient::end() {
  mainQueue_->async([self = shared_from_this()] {
    if (!std::exchange(self->wanted_, false) || !self->there_.value_or(false)) return;
    self->call("Unregister", hold(g_variant_new("(a{sv})", nullptr)), "(a{sv})",
               [](const Result<VariantPtr>& reply) {
                 if (!reply) posix::standardErrorLines()(describe(reply.error()).description);
               });
  });
}

void AgentClient::look() {
  call("Look", nullptr, "()", [](const Result<VariantPtr>& reply) {
    if (!reply) posix::standardErrorLines()(describe(reply.error()).description);
  });
}

void AgentClient::takeAway(const std::vector<std::string>& identifiers) {
  GVariantBuilder list;
  g_variant_builder_init(&list, G_VARIANT_TYPE("as"));
  for (const auto& identifier : identifiers) {
    // The bus takes no other, and no notification has one.
    if (g_utf8_validate(identifier.c_str(), -1, nullptr))
      g_variant_builder_add(&list, "s", identifier.c_str());
  }
  call("TakeAway", hold(g_variant_new("(as)", &list)), "()", [](const Result<VariantPtr>&) {});
}

void AgentClient::ask() {
  if (!*there_) return events_.refused(Error{"Remote notifications are not available: " + reason_});
  call("Register", hold(g_variant_new("(a{sv})", nullptr)), "(a{sv})",
       [self = shared_from_this()](const Result<VariantPtr>& reply) {
         if (!reply) return self->events_.refused(describe(reply.error()));
         const VariantPtr condition(g_variant_get_child_value(reply->get(), 0));
         self->note(condition.get());
       });
}

void AgentClient::call(const char* method, VariantPtr arguments, const char* answer,
                       Connection::Reply reply) {
  connection_->call({name_.c_str(), agentPath, agentInterface, method, answer}, std::move(arguments),
                    [self = shared_from_this(), reply = std::move(reply)](Result<VariantPtr> result) mutable {
                      reply(std::move(result));
                    });
}

void AgentClient::note(GVariant* condition) {
  if (!wanted_) return;
  const auto stage = textIn(condition, "stage");
  if (stage == "refused") return events_.refused(Error{textIn(condition, "reason")});
  auto subscription = textIn(condition, "subscription");
  if (stage != "registered" || subscription.empty() || subscription == subscription_) return;
  subscription_ = std::move(subscription);
  events_.registered(subscription_);
}

}  // namespace VorselKelp::freedesktop
