#include "application/Taps.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpFreedesktop/DesktopPorts.h"
#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::freedesktop {
namespace {

std::string orDefault(std::string button) {
  return button.empty() ? std::string(platform::defaultActionIdentifier) : button;
}

}  // namespace

Taps::Taps(std::shared_ptr<system::StoreWorker> worker, std::shared_ptr<platform::MainQueue> mainQueue,
           std::shared_ptr<platform::Clock> clock, Doors doors)
    : worker_(std::move(worker)),
      mainQueue_(std::move(mainQueue)),
      clock_(std::move(clock)),
      doors_(std::move(doors)) {}

void Taps::tapped(const std::string& identifier, std::string button, const std::string& activationToken) {
  ++underWay_;
  worker_->read(
      mainQueue_,
      [=, button = orDefault(std::move(button))](system::NotificationStore& store) -> std::optional<Tapped> {
        auto request = store.tappable(identifier);
        if (!request) return std::nullopt;
        return judge(store, *std::move(request), button);
      },
      [weak = weak_from_this(), activationToken](std::optional<Tapped> tapped) {
        const auto self = weak.lock();
        if (!self) return;
        --self->underWay_;
        if (tapped) return self->handle(*std::move(tapped), activationToken);
        posix::standardErrorLines()("A notification was tapped that nobody knows any more");
      });
}

void Taps::activated(const std::string& identifier, std::string button) {
  ++underWay_;
  worker_->read(
      mainQueue_,
      [identifier,
       button = orDefault(std::move(button))](system::NotificationStore& store) -> std::optional<Tapped> {
        auto response = store.claimResponse(identifier, button);
        if (!response) return std::nullopt;
        return judge(store, std::move(response->response.request), button);
      },
      [weak = weak_from_this()](std::optional<Tapped> tapped) {
        const auto self = weak.lock();
        if (!self) return;
        --self->underWay_;
        if (tapped) self->handle(*std::move(tapped), {});
      });
}

void Taps::takeKept() {
  ++underWay_;
  worker_->read(
      mainQueue_,
      [](system::NotificationStore& store) {
        std::vector<Tapped> taken;
        for (auto& kept : store.takeResponses()) {
          auto& [request, button] = kept.response;
          taken.push_back(judge(store, std::move(request), std::move(button)));
        }
        return taken;
      },
      [weak = weak_from_this()](std::vector<Tapped> taken) {
        const auto self = weak.lock();
        if (!self) return;
        --self->underWay_;
        for (auto& tapped : taken) self->handle(std::move(tapped), {});
      });
}

void Taps::dismissed(const std::string& identifier) {
  worker_->post([identifier](system::NotificationStore& store) { store.noteTapped(identifier); });
}

Taps::Tapped Taps::judge(system::NotificationStore& store, platform::NotificationRequest request,
                         std::string button) {
  bool raises = button != platform::dismissActionIdentifier;
  if (raises) {
    const auto actions = store.actionsOf(request.content.categoryIdentifier);
    const auto pressed = std::ranges::find(actions, button, &platform::NotificationAction::identifier);
    raises = pressed == actions.end() || pressed->option != platform::NotificationActionOption::destructive;
  }
  return {std::move(request), std::move(button), raises};
}

void Taps::handle(Tapped tapped, const std::string& activationToken) {
  const auto identifier = tapped.request.identifier;
  if (doors_.raise && tapped.raises) doors_.raise(activationToken);
  open(std::move(tapped));
  // Not before: the response names the files that go with the notification.
  dismissed(identifier);
}

void Taps::open(Tapped tapped) const {
  const bool campaign = tapped.button == campaignAction;
  if (campaign && doors_.openCampaign) return doors_.openCampaign({std::move(tapped.request), clock_->now()});
  if (campaign) tapped.button = platform::defaultActionIdentifier;
  VorselKellp::pushTrackOpen(true, {std::move(tapped.request), std::move(tapped.button)},
                             [](const std::optional<std::string>&) {});
}

}  // namespace VorselKelp::freedesktop
