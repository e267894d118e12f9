#include "brellixctl/Commands.h"

#include <algorithm>
#include <cstdio>

#include "VorselKelpSimulator/StoreListing.h"
#include "VorselKelpSystem/NotificationRecords.h"
#include "brellixctl/PlainText.h"
#include "brellixctl/Reports.h"

namespace brellixctl {

using VorselKelp::JSONAny;
namespace platform = VorselKelp::platform;
namespace device = VorselKelp::simulator;
namespace system = VorselKelp::system;

namespace {

void printErrorLines(const std::vector<std::string>& lines) {
  for (const auto& line : lines) printErrorLine("brellixctl: " + line);
}

void printJSON(const JSONAny& json) {
  std::printf("%s\n", system::encodeLossy(json).c_str());
}

/// Carries out `operation` on the target and shows its outcome.
template <class Operation>
int perform(const CommonOptions& common, Operation&& operation) {
  const auto target = Target::open(common.home, common.manifest);
  if (!target) return fail(target.error());
  const auto outcome = operation(*target);
  if (!outcome) return fail(outcome.error());
  printErrorLines(outcome->errorLines);
  return answer(toJSON(*outcome), inWords(*outcome), outcome->failure);
}

void printStore(const char* title, const JSONAny& values) {
  const auto& entries = *values.as<JSONAny::Dictionary>();
  std::printf("%s%s\n", title, entries.empty() ? ": nothing" : "");
  for (const auto& [key, value] : entries) {
    auto shown = plainText(key);
    shown.resize(std::max<std::size_t>(shown.size(), 28), ' ');
    printWords("  " + shown + ' ' + plainText(system::encodeLossy(value)) + '\n');
  }
}

JSONAny pendingJSON(const system::HeldNotification& held, double now) {
  auto json = notificationJSON(held.request, {});
  json.push_back({"dueIn", held.due - now});
  json.push_back({"repeats", held.request.trigger && held.request.trigger->repeats});
  return json;
}

JSONAny categoryJSON(const platform::NotificationCategory& category) {
  return JSONAny::Dictionary{{"identifier", category.identifier},
                             {"actions", system::encodeActions(category.actions)},
                             {"customDismissAction", category.customDismissAction}};
}

JSONAny notificationsJSON(device::SimulatedDevice& simulated) {
  JSONAny::List delivered, pending, categories;
  for (const auto& held : simulated.delivered()) {
    const auto actions = simulated.actionsOf(held.request.content.categoryIdentifier);
    delivered.push_back(notificationJSON(held.request, actions));
  }
  for (const auto& held : simulated.pending()) pending.push_back(pendingJSON(held, simulated.clock()->now()));
  for (const auto& category : simulated.categories()) categories.push_back(categoryJSON(category));
  return JSONAny::Dictionary{{"delivered", std::move(delivered)},
                             {"pending", std::move(pending)},
                             {"categories", std::move(categories)}};
}

void printNotifications(device::SimulatedDevice& simulated) {
  const auto delivered = simulated.delivered();
  std::printf("Delivered: %zu\n", delivered.size());
  for (const auto& held : delivered) {
    const auto actions = simulated.actionsOf(held.request.content.categoryIdentifier);
    printWords(inWords(held.request, actions) + '\n');
  }
  const auto pending = simulated.pending();
  std::printf("Pending: %zu\n", pending.size());
  for (const auto& held : pending) {
    printWords("  " + plainText(held.request.identifier) + "  " + plainText(held.request.content.title));
    std::printf("  in %.0f s\n", held.due - simulated.clock()->now());
  }
  std::printf("Categories registered: %zu\n", simulated.categories().size());
}

}  // namespace

int runLaunch(const CommonOptions& common, const LaunchRequest& request) {
  return perform(common, [&](const Target& target) { return launch(target, request); });
}

int runPush(const CommonOptions& common, const PushRequest& request) {
  return perform(common, [&](const Target& target) { return push(target, request); });
}

int runTap(const CommonOptions& common, const TapRequest& request) {
  return perform(common, [&](const Target& target) { return tap(target, request); });
}

int runNotify(const CommonOptions& common, TapRequest request) {
  request.onDesktop = true;
  return runTap(common, request);
}

int runShow(const CommonOptions& common, const ShowRequest& request) {
  return perform(common, [&](const Target& target) { return show(target, request); });
}

int runStore(const CommonOptions& common) {
  const auto target = Target::open(common.home, common.manifest);
  if (!target) return fail(target.error());
  const auto own = [&](device::ProcessKind kind) {
    return device::listStandardDefaults(target->manifest, target->home, kind);
  };
  const auto group = device::listGroupDefaults(target->manifest, target->home);
  const auto application = own(device::ProcessKind::application);
  const auto service = own(device::ProcessKind::serviceExtension);
  const auto content = own(device::ProcessKind::contentExtension);
  if (common.json) {
    printJSON(JSONAny::Dictionary{
        {"group", group}, {"application", application}, {"service", service}, {"content", content}});
    return 0;
  }
  printStore("The application group's store", group);
  printStore("The application's own", application);
  printStore("The service extension's own", service);
  printStore("The content extension's own", content);
  return 0;
}

int runBadge(const CommonOptions& common) {
  const auto target = Target::open(common.home, common.manifest);
  if (!target) return fail(target.error());
  const auto badge = target->device().badge();
  if (common.json) {
    printJSON(JSONAny::Dictionary{{"badge", badge}});
  } else if (badge == 0) {
    std::puts("The application's icon shows no badge.");
  } else {
    std::printf("The application's icon shows the badge %lld.\n", static_cast<long long>(badge));
  }
  return 0;
}

int runNotifications(const CommonOptions& common, double advance) {
  const auto target = Target::open(common.home, common.manifest);
  if (!target) return fail(target.error());
  auto simulated = target->device();
  if (const auto status = simulated.advanceClock(advance); !status) return fail(status.error().description);
  if (common.json) {
    printJSON(notificationsJSON(simulated));
  } else {
    printNotifications(simulated);
  }
  return 0;
}

}  // namespace brellixctl
