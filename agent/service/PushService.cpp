#include "service/PushService.h"

#include <utility>

#include "bus/Text.h"
#include "org.vorselkelp.PushAgent1.xml.h"

namespace VorselKelp::agent {
namespace {

using Stage = Registration::Stage;

constexpr const char* agentPath = "/org/vorselkelp/PushAgent";
constexpr const char* agentInterfaceName = "org.vorselkelp.PushAgent1";
constexpr guint32 version = 1;
constexpr std::size_t mostEarly = 100;
constexpr std::size_t longestName = 255;  // bytes, on the bus

const char* nameOf(Stage stage) {
  switch (stage) {
    case Stage::none:
      return "none";
    case Stage::pending:
      return "pending";
    case Stage::refused:
      return "refused";
    case Stage::registered:
      return "registered";
  }
  return "none";
}

GVariant* encode(const ServiceEvents& events) {
  const auto condition = events.condition();
  GVariantBuilder members;
  g_variant_builder_init(&members, G_VARIANT_TYPE("a{sv}"));
  const auto add = [&](const char* key, GVariant* value) {
    g_variant_builder_add(&members, "{sv}", key, value);
  };
  add("version", g_variant_new_uint32(version));
  add("stage", g_variant_new_string(nameOf(condition.stage)));
  const auto addText = [&](const char* key, const std::string& text) {
    if (!text.empty()) add(key, g_variant_new_string(text.c_str()));
  };
  addText("reason", condition.reason);
  addText("distributor", condition.distributor);
  addText("wanted", shortText(events.wanted, longestName));
  if (condition.subscription)
    add("subscription", g_variant_new_string(webpush::subscriptionText(*condition.subscription).c_str()));
  return g_variant_builder_end(&members);
}

std::vector<std::string> textsOf(GVariant* arguments) {
  std::vector<std::string> texts;
  GVariantIter* all = nullptr;
  g_variant_get(arguments, "(as)", &all);
  const char* text = nullptr;
  while (g_variant_iter_loop(all, "&s", &text)) texts.emplace_back(text);
  g_variant_iter_free(all);
  return texts;
}

}  // namespace

Status PushService::serve(ServiceEvents events) {
  events_ = std::move(events);
  return bus_.serve(agentPath, agentInterface.data(), [this](Call call) {
    if (begun_) return handle(call);
    if (early_.size() == mostEarly) return call.answer(Error{"The push agent is starting"});
    // Its arguments last for as long as it does.
    early_.push_back(std::move(call));
  });
}

void PushService::begin() {
  begun_ = true;
  for (auto& call : std::exchange(early_, {})) handle(call);
}

void PushService::changed() {
  bus_.emitSignal(agentPath, agentInterfaceName, "Changed", g_variant_new("(@a{sv})", encode(events_)));
}

void PushService::handle(Call& call) {
  const auto done = [&] { call.answer(freedesktop::hold(g_variant_new("()"))); };
  if (call.method == "Look") {
    events_.look();
    return done();
  }
  if (call.method == "TakeAway") {
    events_.takeAway(textsOf(call.arguments));
    return done();
  }
  // There is one property. Whoever reads it has started the agent, mostly, and hears what is, not that
  // nothing is known yet.
  if (call.method == "Get") return call.answer(freedesktop::hold(g_variant_new("(v)", encode(events_))));
  if (call.method == "GetAll")
    return call.answer(
        freedesktop::hold(g_variant_new_parsed("({'Condition': <%@a{sv}>},)", encode(events_))));
  call.method == "Register" ? events_.registerIt() : events_.unregisterIt();
  call.answer(freedesktop::hold(g_variant_new("(@a{sv})", encode(events_))));
}

}  // namespace VorselKelp::agent
