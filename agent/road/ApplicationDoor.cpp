#include "road/ApplicationDoor.h"

#include <utility>

#include "VorselKelpFreedesktop/Application.h"

namespace VorselKelp::agent {
namespace {

/// Seconds in which an application has to be up.
constexpr int patience = 60;

/// The object that every application of this identifier serves.
std::string objectOf(std::string identifier) {
  for (auto& c : identifier) {
    if (c == '.') c = '/';
    if (c == '-') c = '_';
  }
  return "/" + identifier;
}

GVariant* platformData(const std::string& activationToken) {
  GVariantBuilder data;
  g_variant_builder_init(&data, G_VARIANT_TYPE("a{sv}"));
  if (!activationToken.empty()) {
    // Both: toolkits differ in which they look at.
    for (const char* key : {"desktop-startup-id", "activation-token"})
      g_variant_builder_add(&data, "{sv}", key, g_variant_new_string(activationToken.c_str()));
  }
  return g_variant_builder_end(&data);
}

}  // namespace

ApplicationDoor::ApplicationDoor(Bus& bus, std::string identifier)
    : bus_(bus), identifier_(std::move(identifier)), path_(objectOf(identifier_)) {}

void ApplicationDoor::respond(const std::string& notification, const std::string& action,
                              const std::string& activationToken, Reached reached) {
  activate(freedesktop::Application::responseAction,
           g_variant_new("(ss)", notification.c_str(), action.c_str()), activationToken, std::move(reached));
}

void ApplicationDoor::push(const std::string& payload, Reached reached) {
  activate(freedesktop::Application::pushAction, g_variant_new_string(payload.c_str()), {},
           std::move(reached));
}

void ApplicationDoor::activate(const char* action, GVariant* target, const std::string& activationToken,
                               Reached reached) {
  GVariantBuilder parameters;
  g_variant_builder_init(&parameters, G_VARIANT_TYPE("av"));
  g_variant_builder_add(&parameters, "v", target);
  bus_.call(
      identifier_.c_str(), path_, "org.freedesktop.Application", "ActivateAction",
      g_variant_new("(sav@a{sv})", action, &parameters, platformData(activationToken)), "()",
      [reached = std::move(reached)](const Result<VariantPtr>& reply) mutable {
        reached(reply ? Status(Done{}) : reply.error());
      },
      patience);
}

}  // namespace VorselKelp::agent
