#include <algorithm>
#include <cstring>

#include "VorselKelpWebPush/Subscription.h"
#include "brellixctl/doctor/desktop/DesktopChecks.h"
#include "brellixctl/doctor/desktop/SessionBus.h"

namespace brellixctl {

namespace system = VorselKelp::system;
using Texts = std::vector<std::string>;

namespace {

constexpr const char* distributors = "org.unifiedpush.Distributor.";

/// What follows the key among the texts of a dictionary.
std::string member(const Texts& texts, const std::string& key) {
  const auto found = std::ranges::find(texts, key);
  return texts.end() - found > 1 ? *(found + 1) : std::string();
}

std::string joined(const Texts& texts) {
  std::string all;
  for (const auto& text : texts) all += (all.empty() ? "" : ", ") + text;
  return all;
}

VorselKelp::Result<Texts> propertyOf(const std::string& name, const std::string& path,
                                     const std::string& interface, const std::string& property) {
  return askBus({name, path, "org.freedesktop.DBus.Properties.Get", {interface, property}});
}

Texts distributorsThere() {
  Texts there;
  for (const char* list : {"ListNames", "ListActivatableNames"}) {
    const auto names = askBus(
        {"org.freedesktop.DBus", "/org/freedesktop/DBus", std::string("org.freedesktop.DBus.") + list, {}});
    for (const auto& name : names ? *names : Texts()) {
      if (name.starts_with(distributors)) there.push_back(name.substr(std::strlen(distributors)));
    }
  }
  std::ranges::sort(there);
  there.erase(std::unique(there.begin(), there.end()), there.end());
  return there;
}

std::string shortName(std::string name) {
  if (name.starts_with(distributors)) name.erase(0, std::strlen(distributors));
  return name;
}

/// Of one with which the agent is registered.
Finding registeredFinding(const std::string& registered, const std::string& wanted, Texts there) {
  const bool known = std::erase(there, registered) > 0;
  const auto others = there.empty() ? std::string() : "; there is also " + joined(there);
  if (!wanted.empty() && wanted != registered)
    return fault("distributor",
                 "the agent is to use " + wanted + ", and is registered with " + registered + others,
                 "Start it, or correct \"remoteNotifications.distributor\" or UNIFIEDPUSH_DISTRIBUTOR");
  if (known) return fine("distributor", registered + " has the agent's registration" + others);
  return fault("distributor", registered + " has the agent's registration, and is not there" + others,
               there.empty() || !wanted.empty()
                   ? "Start it"
                   : "Start it; after five minutes without it the agent takes " + there.front());
}

/// Of one that the agent may choose.
Finding freeFinding(const std::string& asked, const Texts& there) {
  const auto& taken = std::ranges::count(there, asked) ? asked : there.front();
  return fine("distributor", joined(there) + "; the agent is to take " + taken);
}

/// `condition` is what the agent says; empty: it does not answer.
Finding distributorFinding(const Texts& condition, const std::string& described) {
  const auto there = distributorsThere();
  const auto told = member(condition, "wanted");
  const auto wanted = shortName(told.empty() ? described : told);
  const auto asked = shortName(member(condition, "distributor"));
  if (member(condition, "stage") == "registered" && !asked.empty())
    return registeredFinding(asked, wanted, there);
  if (there.empty())
    return fault("distributor", "there is none: no push reaches this desktop",
                 "Install one, or start desk_distributor for a try");
  if (wanted.empty()) return freeFinding(asked, there);
  if (std::ranges::count(there, wanted)) return fine("distributor", wanted + ", which the agent is to use");
  return fault("distributor", "the agent is to use " + wanted + ", and there is " + joined(there),
               "Start it, or correct \"remoteNotifications.distributor\" or UNIFIEDPUSH_DISTRIBUTOR");
}

Finding subscriptionFinding(const std::string& text) {
  const auto subscription = VorselKelp::webpush::parseSubscription(text);
  if (!subscription)
    return fault("subscription", "is of no use: " + subscription.error().description,
                 "Restart the distributor, which gives another endpoint");
  const auto& endpoint = subscription->endpoint;
  const auto host = endpoint.find("://") + 3;
  return fine("subscription", "messages are taken at " + endpoint.substr(0, endpoint.find('/', host)));
}

}  // namespace

Findings checkAgent(const std::string& application, const system::Description& description) {
  const auto condition = propertyOf(application + ".Push", "/org/vorselkelp/PushAgent",
                                    "org.vorselkelp.PushAgent1", "Condition");
  Findings findings{
      distributorFinding(condition ? *condition : Texts(), description.remoteNotifications.distributor)};
  if (!condition) {
    findings.push_back(fault("agent", "does not answer: " + condition.error().description,
                             "See \"files\"; what it says itself is where the bus writes, with systemd in "
                             "journalctl --user"));
    return findings;
  }
  const auto stage = member(*condition, "stage");
  const auto reason = member(*condition, "reason");
  if (stage == "registered") {
    findings.push_back(fine("agent", "answers, and is registered"));
    findings.push_back(subscriptionFinding(member(*condition, "subscription")));
  } else if (stage == "none") {
    findings.push_back(fault("agent", "answers, and was not asked to register",
                             "Start the application and allow notifications, with push() in its builder"));
  } else if (stage == "pending") {
    findings.push_back(fault("agent", "waits: " + reason, "See \"distributor\"; it goes on by itself"));
  } else {
    findings.push_back(
        fault("agent", "was refused: " + reason, "Start the application again once the reason is gone"));
  }
  return findings;
}

Findings checkNotifications() {
  const std::string name = "org.freedesktop.Notifications";
  const std::string path = "/org/freedesktop/Notifications";
  Findings findings;
  const auto server = askBus({name, path, name + ".GetServerInformation", {}});
  const auto can = askBus({name, path, name + ".GetCapabilities", {}});
  if (!server || !can || server->size() < 3) {
    findings.push_back(fault("server", "no notification server answers: messages wait for one",
                             "Start the desktop's own, or one such as dunst"));
  } else if (!std::ranges::count(*can, "actions")) {
    findings.push_back(notice("server",
                              (*server)[0] + " " + (*server)[2] + " has no actions: taps do nothing",
                              "Take another notification server"));
  } else {
    findings.push_back(fine("server", (*server)[0] + " " + (*server)[2] + " shows: " + joined(*can)));
  }
  const auto portal = propertyOf("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                                 "org.freedesktop.portal.Notification", "version");
  findings.push_back(portal ? fine("portal", "takes notifications of sandboxed applications")
                            : notice("portal", "takes no notifications: " + portal.error().description,
                                     "Only sandboxed applications need it: install xdg-desktop-portal"));
  return findings;
}

}  // namespace brellixctl
