#include "brellixctl/try/Trial.h"

#include <algorithm>
#include <filesystem>

#include "VorselKelpSimulator/StoreListing.h"

namespace brellixctl {

using VorselKelp::Done;
using VorselKelp::Error;
using VorselKelp::Result;
using VorselKelp::Status;
using When = VorselKelp::PayloadLint::Stop::When;
namespace device = VorselKelp::simulator;

namespace {

/// Whether the content extension may keep the arrows of a carousel.
bool keepsArrows(const device::Manifest& manifest) {
  const auto group = "group." + manifest.bundleIdentifier + ".content.vorselKellp";
  return std::ranges::find(manifest.groups, group) != manifest.groups.end();
}

}  // namespace

Result<std::vector<TrialPart>> Trial::run() {
  for (const auto step : {&Trial::start, &Trial::deliver, &Trial::tapAll, &Trial::openCarousel}) {
    if (const auto status = (this->*step)(); !status) return status.error();
  }
  return std::move(parts_);
}

Status Trial::start() {
  LaunchRequest request;
  request.answer = "allow";
  const auto launched = launch(plan_.target, request);
  if (!launched) return launched.error();
  if (!launched->failure.empty()) return Error{launched->failure};
  return Done{};
}

Status Trial::deliver() {
  const auto store = [&] { return device::listGroupDefaults(plan_.target.manifest, plan_.target.home); };
  const auto before = store();
  PushRequest request;
  request.payloadPath = plan_.payload;
  request.identifier = plan_.identifier;
  const auto pushed = push(plan_.target, request);
  if (!pushed) return pushed.error();
  parts_.push_back(comparison_.delivery(*pushed));
  // The application itself may store what it likes when it is woken.
  if (!pushed->silent) parts_.push_back(comparison_.stored(before, store()));
  return Done{};
}

Status Trial::tapAll() {
  for (const auto& told : comparison_.lint().taps) {
    const auto target = copiedDevice();
    if (!target) return target.error();
    TapRequest request;
    request.identifier = plan_.identifier;
    if (told.action != VorselKelp::platform::defaultActionIdentifier) request.action = told.action;
    const auto tapped = tap(*target, request);
    if (!tapped) return tapped.error();
    parts_.push_back(comparison_.tap(told, *tapped));
  }
  return Done{};
}

Status Trial::openCarousel() {
  const auto& lint = comparison_.lint();
  if (lint.carousel) return walkPages();
  const bool stops =
      std::ranges::any_of(lint.stops, [](const auto& stop) { return stop.when == When::carouselOpened; });
  if (!stops) return Done{};
  const auto shown = showPage(0, false);
  if (!shown) return shown.error();
  parts_.push_back(comparison_.stoppedCarousel(*shown));
  return Done{};
}

Status Trial::walkPages() {
  const auto& carousel = *comparison_.lint().carousel;
  const std::size_t reached = carousel.arrows ? carousel.pages.size() : 1;
  URLList earlier;
  for (std::size_t page = 0; page < reached; ++page) {
    const auto shown = showPage(page, false);
    if (!shown) return shown.error();
    if (page == 0) parts_.push_back(comparison_.opening(*shown, keepsArrows(plan_.target.manifest)));
    if (page > 0 || !shown->stopped) parts_.push_back(comparison_.page(page, *shown, earlier));
    if (shown->stopped) break;  // nobody comes to the pages behind it
    earlier = comparison_.requestsOf(*shown);
    const auto tapped = showPage(page, true);
    if (!tapped) return tapped.error();
    parts_.push_back(comparison_.pageTap(page, *tapped, earlier));
  }
  return Done{};
}

Result<ShowOutcome> Trial::showPage(std::size_t page, bool opens) {
  const auto target = copiedDevice();
  if (!target) return target.error();
  ShowRequest request;
  request.identifier = plan_.identifier;
  request.anyway = true;
  for (std::size_t i = 0; i < page; ++i) request.acts += i == 0 ? "right" : ",right";
  if (opens) request.acts += request.acts.empty() ? "open" : ",open";
  auto shown = show(*target, request);
  if (shown && !shown->stopped && !shown->failure.empty()) return Error{shown->failure};
  return shown;
}

Result<Target> Trial::copiedDevice() {
  const auto home = plan_.folder + "/device-" + std::to_string(++copies_);
  std::error_code error;
  std::filesystem::copy(plan_.target.homePath, home, std::filesystem::copy_options::recursive, error);
  if (error) return Error{"Cannot copy the device to " + home + ": " + error.message()};
  return Target::open(home, plan_.target.manifestPath);
}

}  // namespace brellixctl
