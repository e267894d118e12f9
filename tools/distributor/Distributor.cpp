#include "distributor/Distributor.h"

#include <algorithm>
#include <utility>

namespace distributor {
namespace {

using VorselKelp::Error;
using VorselKelp::Result;
using VorselKelp::Status;
using VorselKelp::agent::Call;
using VorselKelp::agent::VariantPtr;
using VorselKelp::freedesktop::hold;

constexpr const char* distributorPath = "/org/unifiedpush/Distributor";
constexpr const char* connectorPath = "/org/unifiedpush/Connector";
constexpr const char* succeeded = "REGISTRATION_SUCCEEDED";
constexpr const char* failed = "REGISTRATION_FAILED";

constexpr const char* firstVersion = R"(<node><interface name="org.unifiedpush.Distributor1">
  <method name="Register">
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
    <arg type="s" direction="out"/><arg type="s" direction="out"/>
  </method>
  <method name="Unregister"><arg type="s" direction="in"/></method>
</interface></node>)";

constexpr const char* secondVersion = R"(<node><interface name="org.unifiedpush.Distributor2">
  <method name="Register"><arg type="a{sv}" direction="in"/><arg type="a{sv}" direction="out"/></method>
  <method name="Unregister"><arg type="a{sv}" direction="in"/><arg type="a{sv}" direction="out"/></method>
</interface></node>)";

std::string text(GVariant* arguments, gsize index) {
  const VariantPtr value(g_variant_get_child_value(arguments, index));
  return g_variant_get_string(value.get(), nullptr);
}

std::string member(GVariant* arguments, const char* key) {
  const VariantPtr members(g_variant_get_child_value(arguments, 0));
  const VariantPtr value(g_variant_lookup_value(members.get(), key, G_VARIANT_TYPE_STRING));
  return value ? g_variant_get_string(value.get(), nullptr) : "";
}

Distributor::Registration read(const Call& call, int version) {
  auto* given = call.arguments;
  if (version == 2) {
    return {member(given, "service"), member(given, "token"), member(given, "description"),
            member(given, "vapid")};
  }
  if (call.method == "Unregister") return {{}, text(given, 0), {}, {}};
  return {text(given, 0), text(given, 1), text(given, 2), {}};
}

GVariant* members(std::initializer_list<std::pair<const char*, GVariant*>> entries) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sv}"));
  for (const auto& [key, value] : entries) g_variant_builder_add(&builder, "{sv}", key, value);
  return g_variant_new("(a{sv})", &builder);
}

VariantPtr outcome(int version, const std::string& reason) {
  const char* result = reason.empty() ? succeeded : failed;
  if (version == 1) return hold(g_variant_new("(ss)", result, reason.c_str()));
  return hold(
      members({{"success", g_variant_new_string(result)}, {"reason", g_variant_new_string(reason.c_str())}}));
}

VariantPtr nothing(int version) {
  return hold(version == 1 ? g_variant_new("()") : members({}));
}

}  // namespace

Distributor::Distributor(VorselKelp::agent::Bus& bus, std::string name, Habits given)
    : habits(std::move(given)), bus_(bus), name_("org.unifiedpush.Distributor." + std::move(name)) {
  const bool second = habits.version == 2;
  (void)bus_.serve(distributorPath, second ? secondVersion : firstVersion,
                   [this, version = habits.version](Call call) { called(std::move(call), version); });
}

void Distributor::begin(std::function<void(bool)> owned) {
  bus_.requestName(name_, [owned = std::move(owned)](const Result<bool>& ours) { owned(ours && *ours); });
}

void Distributor::end() {
  registrations_.clear();
  bus_.releaseName(name_, [] {});
}

void Distributor::called(Call call, int version) {
  ++asked;
  const auto given = read(call, version);
  const auto known = std::ranges::find_if(registrations_,
                                          [&](const auto& each) { return each.second.token == given.token; });
  auto endpoint = known == registrations_.end() ? std::string() : known->first;
  if (call.method == "Register") {
    if (!habits.answers) return;
    if (!habits.refusal.empty()) return call.answer(outcome(version, habits.refusal));
    if (endpoint.empty()) endpoint = adopt(given);
    const auto registration = registrations_.at(endpoint);
    if (habits.endpointFirst) tellEndpoint(endpoint, registration, false);
    call.answer(outcome(version, {}));
    if (!habits.endpointFirst) tellEndpoint(endpoint, registration, false);
    return;
  }
  if (!habits.answers) return;
  call.answer(nothing(version));
  if (known == registrations_.end()) return;
  const auto registration = known->second;
  registrations_.erase(known);
  if (habits.confirms)
    tell(registration, "Unregistered",
         g_variant_new_string(habits.namesRemoved ? registration.token.c_str() : ""), nullptr, nullptr);
}

std::string Distributor::adopt(const Registration& registration) {
  auto endpoint = std::to_string(++last_) + "-" + registration.token;
  registrations_.try_emplace(endpoint, registration);
  return endpoint;
}

void Distributor::tellEndpoint(const std::string& endpoint, const Registration& registration, bool none) {
  const auto address = none ? std::string() : habits.endpointsBefore + endpoint;
  tell(registration, "NewEndpoint", g_variant_new_string(registration.token.c_str()),
       g_variant_new_string(address.c_str()), nullptr);
}

void Distributor::tellEndpoints(bool none) {
  for (const auto& [endpoint, registration] : registrations_) tellEndpoint(endpoint, registration, none);
}

void Distributor::unregisterAll() {
  for (const auto& [endpoint, registration] : std::exchange(registrations_, {}))
    tell(registration, "Unregistered", g_variant_new_string(registration.token.c_str()), nullptr, nullptr);
}

Status Distributor::send(const std::string& endpoint, const std::string& bytes, const std::string& id,
                         Delivered delivered) {
  const auto found = registrations_.find(endpoint);
  if (found == registrations_.end()) return Error{"nobody is registered there"};
  const auto& [service, token, description, vapidKey] = found->second;
  auto* message = g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, bytes.data(), bytes.size(), 1);
  const VariantPtr given = habits.version == 1
                               ? hold(g_variant_new("(s@ays)", token.c_str(), message, id.c_str()))
                               : hold(members({{"token", g_variant_new_string(token.c_str())},
                                               {"message", message},
                                               {"id", g_variant_new_string(id.c_str())}}));
  bus_.call(service.c_str(), connectorPath,
            habits.version == 1 ? "org.unifiedpush.Connector1" : "org.unifiedpush.Connector2", "Message",
            given.get(), habits.version == 1 ? "()" : "(a{sv})",
            [delivered = std::move(delivered)](const Result<VariantPtr>& reply) {
              if (delivered) delivered(reply ? Status(VorselKelp::Done{}) : reply.error());
            });
  return VorselKelp::Done{};
}

void Distributor::tell(const Registration& registration, const char* method, GVariant* first,
                       GVariant* second, Delivered delivered) {
  const bool isSecond = habits.version == 2;
  GVariant* given = nullptr;
  if (isSecond) {
    given = second ? members({{"token", first}, {"endpoint", second}}) : members({{"token", first}});
  } else {
    given = second ? g_variant_new("(@s@s)", first, second) : g_variant_new("(@s)", first);
  }
  bus_.call(registration.service.c_str(), connectorPath,
            isSecond ? "org.unifiedpush.Connector2" : "org.unifiedpush.Connector1", method, given,
            isSecond ? "(a{sv})" : "()", [delivered = std::move(delivered)](const Result<VariantPtr>& reply) {
              if (delivered) delivered(reply ? Status(VorselKelp::Done{}) : reply.error());
            });
}

}  // namespace distributor
