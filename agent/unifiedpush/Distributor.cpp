#include "unifiedpush/Distributor.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

namespace VorselKelp::agent {
namespace {

using Outcome = RegistrationAnswer::Outcome;
using Answer = platform::UniqueFunction<void(RegistrationAnswer)>;

constexpr const char* distributorPath = "/org/unifiedpush/Distributor";
constexpr const char* firstDistributor = "org.unifiedpush.Distributor1";
constexpr const char* secondDistributor = "org.unifiedpush.Distributor2";

bool says(const Error& error, std::initializer_list<const char*> names) {
  return std::ranges::any_of(names, [&](const char* name) {
    return error.description.starts_with(std::string("org.freedesktop.DBus.Error.") + name + ":");
  });
}

/// It runs, but knows nothing of what it was asked.
bool speaksAnother(const Error& error) {
  return says(error, {"UnknownMethod", "UnknownInterface", "UnknownObject", "InvalidArgs"});
}

RegistrationAnswer failed(const Error& error) {
  if (says(error, {"ServiceUnknown", "NameHasNoOwner"})) return {Outcome::absent, "it does not run"};
  return {Outcome::later, error.description};
}

/// What the reasons of the interface mean for who asked.
RegistrationAnswer failed(const std::string& reason) {
  const auto text = reason.empty() ? std::string("it gave no reason") : reason;
  const bool passes = reason == "INTERNAL_ERROR" || reason == "NETWORK" || reason == "ACTION_REQUIRED";
  return {passes || reason.empty() ? Outcome::later : Outcome::refused, text};
}

void addText(GVariantBuilder& members, const char* key, const std::string& text) {
  if (!text.empty()) g_variant_builder_add(&members, "{sv}", key, g_variant_new_string(text.c_str()));
}

std::string textIn(GVariant* members, const char* key) {
  const VariantPtr value(g_variant_lookup_value(members, key, G_VARIANT_TYPE_STRING));
  return value ? g_variant_get_string(value.get(), nullptr) : "";
}

RegistrationAnswer readAnswer(const std::string& result, const std::string& reason) {
  if (result == "REGISTRATION_FAILED") return failed(reason);
  return {Outcome::accepted, {}};
}

void registerFirst(Bus& bus, const RegistrationRequest& request, Answer answer) {
  bus.call(
      request.distributor.c_str(), distributorPath, firstDistributor, "Register",
      g_variant_new("(sss)", request.service.c_str(), request.token.c_str(), request.description.c_str()),
      "(ss)", [answer = std::move(answer)](Result<VariantPtr> reply) mutable {
        if (!reply) return answer(failed(reply.error()));
        const char* result = nullptr;
        const char* reason = nullptr;
        g_variant_get(reply->get(), "(&s&s)", &result, &reason);
        answer(readAnswer(result, reason));
      });
}

GVariant* secondRequest(const RegistrationRequest& request) {
  GVariantBuilder members;
  g_variant_builder_init(&members, G_VARIANT_TYPE("a{sv}"));
  addText(members, "service", request.service);
  addText(members, "token", request.token);
  addText(members, "description", request.description);
  addText(members, "vapid", request.vapidKey);
  return g_variant_new("(a{sv})", &members);
}

/// What the bus's daemon answers with a list of names.
void askForNames(Bus& bus, const char* method, platform::UniqueFunction<void(std::set<std::string>)> answer) {
  bus.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method, nullptr, "(as)",
           [answer = std::move(answer)](Result<VariantPtr> reply) mutable {
             std::set<std::string> names;
             if (reply) {
               const char* name = nullptr;
               GVariantIter* all = nullptr;
               g_variant_get(reply->get(), "(as)", &all);
               while (g_variant_iter_loop(all, "&s", &name)) {
                 if (std::string_view(name).starts_with(std::string(distributorNames) + "."))
                   names.insert(name);
               }
               g_variant_iter_free(all);
             }
             answer(std::move(names));
           });
}

}  // namespace

void registerWith(Bus& bus, const RegistrationRequest& request, Answer answer) {
  bus.call(request.distributor.c_str(), distributorPath, secondDistributor, "Register",
           secondRequest(request), "(a{sv})",
           [&bus, request, answer = std::move(answer)](Result<VariantPtr> reply) mutable {
             if (!reply && speaksAnother(reply.error()))
               return registerFirst(bus, request, std::move(answer));
             if (!reply) return answer(failed(reply.error()));
             const VariantPtr members(g_variant_get_child_value(reply->get(), 0));
             answer(readAnswer(textIn(members.get(), "success"), textIn(members.get(), "reason")));
           });
}

void unregisterFrom(Bus& bus, const std::string& distributor, const std::string& token) {
  GVariantBuilder members;
  g_variant_builder_init(&members, G_VARIANT_TYPE("a{sv}"));
  addText(members, "token", token);
  bus.call(distributor.c_str(), distributorPath, secondDistributor, "Unregister",
           g_variant_new("(a{sv})", &members), "(a{sv})",
           [&bus, distributor, token](const Result<VariantPtr>& reply) {
             if (reply || !speaksAnother(reply.error())) return;
             bus.call(distributor.c_str(), distributorPath, firstDistributor, "Unregister",
                      g_variant_new("(s)", token.c_str()), "()", [](const Result<VariantPtr>&) {});
           });
}

void listDistributors(Bus& bus, platform::UniqueFunction<void(std::vector<std::string>)> answer) {
  askForNames(bus, "ListNames", [&bus, answer = std::move(answer)](std::set<std::string> running) mutable {
    askForNames(
        bus, "ListActivatableNames",
        [running = std::move(running), answer = std::move(answer)](std::set<std::string> known) mutable {
          known.merge(running);
          answer({known.begin(), known.end()});
        });
  });
}

std::string chooseDistributor(const std::vector<std::string>& there, const std::string& wanted) {
  if (wanted.empty()) return there.empty() ? std::string() : there.front();
  for (const auto& name : there) {
    if (name == wanted || name == std::string(distributorNames) + "." + wanted) return name;
  }
  return {};
}

}  // namespace VorselKelp::agent
