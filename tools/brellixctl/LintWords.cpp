#include <algorithm>

#include "brellixctl/LintReports.h"
#include "brellixctl/PlainText.h"

namespace brellixctl {

using VorselKelp::PayloadLint;
namespace platform = VorselKelp::platform;

namespace {

using Opens = PayloadLint::Tap::Opens;

std::string tell(std::string_view label, const std::string& text) {
  std::string padded(label);
  padded.resize(std::max<std::size_t>(padded.size() + 1, 10), ' ');
  return "  " + padded + plainText(text) + '\n';
}

std::string tellEach(std::string_view label, const std::vector<std::string>& texts) {
  std::string words;
  for (const auto& text : texts) words += tell(label, text);
  return words;
}

const char* rootInWords(const PayloadLint& lint) {
  using Stop = PayloadLint::Stop;
  if (lint.silent) return "It is silent: nothing is shown, and the application gets it in the background.\n";
  const bool hasPages = lint.carousel || std::ranges::any_of(lint.stops, [](const Stop& stop) {
                          return stop.when != Stop::When::preparing;
                        });
  switch (lint.root) {
    case PayloadLint::Root::push:
      return hasPages ? "It reads as a push, and as a campaign.\n" : "It reads as a push.\n";
    case PayloadLint::Root::campaign:
      return "It reads as a campaign.\n";
    case PayloadLint::Root::none:
      break;
  }
  return "It reads as nothing that is known.\n";
}

std::string shownInWords(const PayloadLint::Shown& shown) {
  const char* const unlessAd = shown.ad ? ", unless the ad brings its own" : "";
  std::string words = shown.title.empty() && shown.body.empty() ? "  no text\n" : "";
  if (!shown.title.empty()) words += tell("title", shown.title + unlessAd);
  if (!shown.subtitle.empty()) words += tell("subtitle", shown.subtitle);
  if (!shown.body.empty()) words += tell("body", shown.body);
  words += tell("sound", shown.sound ? shown.sound->name.value_or("default") : "none");
  if (shown.badge) words += tell("badge", std::to_string(*shown.badge));
  for (const auto& action : shown.actions) {
    const bool destructive = action.option == platform::NotificationActionOption::destructive;
    words +=
        tell("button", "[" + action.title + "] " + action.identifier + (destructive ? ", destructive" : ""));
  }
  if (shown.image) words += tell("image", *shown.image);
  if (shown.ad) words += tell("image", "the ad's, if it has one");
  return words;
}

template <class Records>
std::string regionsInWords(std::string_view label, const Records& records) {
  std::string names;
  for (const auto& record : records) names += (names.empty() ? "" : ", ") + record.id;
  return tell(label, records.empty() ? "none: an empty list" : names);
}

std::string silentInWords(const PayloadLint::Silent& silent) {
  std::string words = "The library hands the application:\n";
  if (silent.geofences) return words + regionsInWords("geofences", silent.geofences->gl);
  if (silent.beacons) return words + regionsInWords("beacons", silent.beacons->bl);
  return words + "  nothing: neither geofences nor beacons\n";
}

std::string openedInWords(const PayloadLint::Tap& tap) {
  switch (tap.opens) {
    case Opens::browser:
      return tap.url + " in the browser";
    case Opens::deepLink:
      return tap.url + " in the application, as a deep link";
    case Opens::system:
      return tap.url + ", by the system";
    case Opens::nothing:
      break;
  }
  return "nothing";
}

std::string tapsInWords(const PayloadLint& lint) {
  std::string words;
  for (const auto& tap : lint.taps) {
    const bool button = &tap != lint.taps.data();
    words += button ? "A tap on the button \"" + plainText(tap.action) + "\":\n" : "A tap:\n";
    words += tell("opens", openedInWords(tap)) + tellEach("requests", tap.requests);
  }
  return words;
}

std::string pageInWords(const PayloadLint::Page& page) {
  std::string words;
  if (page.title) words += tell("title", *page.title);
  if (page.text) words += tell("text", *page.text);
  words += tell("image", page.image.value_or("none")) + tellEach("requests", page.requests);
  words += tell("tap", "opens " + openedInWords(page.tap));
  for (const auto& request : page.tap.requests) words += tell("tap", "requests " + request);
  return words;
}

std::string carouselInWords(const PayloadLint::Carousel& carousel) {
  std::string words = carousel.arrows ? "The carousel, with arrows:\n" : "The carousel, without arrows:\n";
  for (const auto& request : carousel.arrowRequests)
    words += tell("arrow", request + ", once, where the extension has a container for it");
  words += tellEach("requests", carousel.requests);
  for (std::size_t i = 0; i < carousel.pages.size(); ++i)
    words += "Its page " + std::to_string(i) + ":\n" + pageInWords(carousel.pages[i]);
  return words;
}

}  // namespace

std::string inWords(const PayloadLint& lint) {
  std::string words = rootInWords(lint);
  words += tellEach("error", lint.errors);
  for (const auto& stop : lint.stops) words += tell("stops", stop.text);
  words += tellEach("warning", lint.warnings);
  if (lint.silent) return words + silentInWords(*lint.silent);
  words += "It will show:\n" + shownInWords(lint.shows);
  if (!lint.requests.empty()) words += "While it is prepared:\n" + tellEach("requests", lint.requests);
  words += tapsInWords(lint);
  if (!lint.stored.empty()) words += "It stores:\n";
  for (const auto& [key, entry, text] : lint.stored)
    words += "  " + plainText(key + (entry.empty() ? "" : " " + entry) + ": " + text) + '\n';
  if (lint.carousel) words += carouselInWords(*lint.carousel);
  return words;
}

}  // namespace brellixctl
