#include "brellixctl/try/Comparison.h"

#include <strings.h>

#include <algorithm>
#include <string_view>

#include "brellixctl/ServerAddress.h"
#include "brellixctl/try/StoredTexts.h"
#include "brellixctl/try/Wording.h"

namespace brellixctl {

using VorselKelp::JSONAny;
using VorselKelp::PayloadLint;
using Opens = PayloadLint::Tap::Opens;
using When = PayloadLint::Stop::When;

namespace {

std::string stringOf(const JSONAny* value) {
  const auto* text = value != nullptr ? value->as<std::string>() : nullptr;
  return text != nullptr ? *text : std::string();
}

/// Those of `all` that are not among `earlier`, each as often as it is there more.
URLList since(URLList earlier, const URLList& all) {
  URLList later;
  for (const auto& url : all) {
    const auto known = std::ranges::find(earlier, url);
    if (known == earlier.end()) {
      later.push_back(url);
    } else {
      earlier.erase(known);
    }
  }
  return later;
}

/// What is no web address never leaves the process.
bool leaves(const std::string& url) {
  const auto begins = [&](std::string_view scheme) {
    return url.size() > scheme.size() && ::strncasecmp(url.data(), scheme.data(), scheme.size()) == 0;
  };
  return begins("http://") || begins("https://");
}

std::string nonEmpty(const std::string& text) {
  return text.empty() ? "none" : text;
}

/// A member of what the content extension shows; absent where it is null.
std::optional<std::string> memberOf(const ShowOutcome& shown, const char* name) {
  const auto* value = shown.carousel ? shown.carousel->find(name) : nullptr;
  const auto* text = value != nullptr ? value->as<std::string>() : nullptr;
  return text != nullptr ? std::optional(*text) : std::nullopt;
}

/// The names of the regions that a list holds.
template <class Records>
std::string namesIn(const Records& records) {
  URLList names;
  for (const auto& record : records) names.push_back(record.id);
  return names.empty() ? "an empty list" : wordsFor(names);
}

/// What the library handed to the application of the list at `index`: geofences, then beacons.
std::string handedOver(const PushOutcome& pushed, std::size_t index) {
  for (const auto& call : pushed.delegate) {
    if (stringOf(call.find("name")) != "didReciveAdministrativeNotificationWith") continue;
    const auto* arguments = call.find("arguments");
    const auto* lists = arguments != nullptr ? arguments->as<JSONAny::List>() : nullptr;
    const auto* list =
        lists != nullptr && index < lists->size() ? (*lists)[index].as<JSONAny::List>() : nullptr;
    if (list == nullptr) continue;
    URLList names;
    for (const auto& name : *list) names.push_back(stringOf(&name));
    return names.empty() ? "an empty list" : wordsFor(names);
  }
  return "none";
}

}  // namespace

bool Comparison::stops(When when, std::size_t page) const {
  return std::ranges::any_of(lint_.stops,
                             [&](const auto& stop) { return stop.when == when && stop.page == page; });
}

URLList Comparison::requestsOf(const Outcome& outcome) const {
  URLList urls;
  for (const auto& request : outcome.requests) {
    const auto url = stringOf(request.find("url"));
    if (originOf(url) == ownServer_ || !leaves(url)) continue;
    const auto method = stringOf(request.find("method"));
    urls.push_back((method == "GET" ? "" : method + " ") + original_(url));
  }
  return urls;
}

void Comparison::addStop(TrialPart& part, bool foretold, const Outcome& outcome, bool stopped) const {
  part.judge("extension", foretold ? "stops" : "does not stop",
             stopped ? "stops: " + original_(outcome.failure) : "does not stop", foretold == stopped);
}

void Comparison::addPicture(TrialPart& part, const PushOutcome& pushed) const {
  const bool attached = !pushed.shown.content.attachments.empty();
  const std::string happened = attached ? "attached" : "none";
  if (lint_.shows.ad) return part.judge("picture", "the ad's, if it has one", happened, true);
  part.judge("picture", wordsFor(lint_.shows.image), happened, attached == lint_.shows.image.has_value());
}

void Comparison::addShown(TrialPart& part, const PushOutcome& pushed) const {
  const auto& told = lint_.shows;
  const auto& content = pushed.shown.content;
  const auto compare = [&](const char* what, const std::string& foretold, const std::string& happened) {
    part.compare(what, nonEmpty(foretold), nonEmpty(original_(happened)));
  };
  if (told.ad) {
    part.judge("title", nonEmpty(told.title) + ", unless the ad has one", original_(content.title),
               !content.title.empty() || told.title.empty());
  } else {
    compare("title", told.title, content.title);
  }
  compare("subtitle", told.subtitle, content.subtitle);
  compare("body", told.body, content.body);
  compare("sound", wordsFor(told.sound), wordsFor(content.sound));
  compare("category", told.category, content.categoryIdentifier);
  compare("buttons", wordsFor(told.actions), wordsFor(pushed.actions));
  // An extension counts for itself.
  const auto number = [](const auto& badge) { return badge ? std::to_string(*badge) : std::string(); };
  if (!lint_.prepared) compare("badge", number(told.badge), number(content.badge));
}

TrialPart Comparison::silentDelivery(const PushOutcome& pushed) const {
  TrialPart part{"The silent push", {}};
  const auto word = [](bool silent) { return silent ? "nothing" : "a notification"; };
  const auto silent = lint_.silent.value_or(PayloadLint::Silent());
  part.compare("shows", word(lint_.silent.has_value()), word(pushed.silent));
  part.compare("geofences", silent.geofences ? namesIn(silent.geofences->gl) : "none", handedOver(pushed, 0));
  part.compare("beacons", silent.beacons ? namesIn(silent.beacons->bl) : "none", handedOver(pushed, 1));
  part.compare("requests", wordsFor(lint_.requests), wordsFor(requestsOf(pushed)));
  return part;
}

TrialPart Comparison::delivery(const PushOutcome& pushed) const {
  if (lint_.silent || pushed.silent) return silentDelivery(pushed);
  TrialPart part{"The notification", {}};
  if (lint_.prepared) {
    addStop(part, stops(When::preparing), pushed, pushed.extension == "stopped");
    if (pushed.extension == "silent") part.lines.back().happened += ", and never answers";
  } else {
    part.judge("extension", "not asked for", pushed.extension == "notRun" ? "not asked for" : "asked for",
               pushed.extension == "notRun");
  }
  addShown(part, pushed);
  addPicture(part, pushed);
  const auto sent = requestsOf(pushed);
  // What an ad asks for stands in the ad.
  const bool begins = sent.size() >= lint_.requests.size() &&
                      std::equal(lint_.requests.begin(), lint_.requests.end(), sent.begin());
  const bool same = begins && (lint_.shows.ad || sent.size() == lint_.requests.size());
  part.judge("requests", wordsFor(lint_.requests) + (lint_.shows.ad ? ", then the ad's" : ""), wordsFor(sent),
             same);
  return part;
}

TrialPart Comparison::stored(const JSONAny& before, const JSONAny& after) const {
  TrialPart part{"The store", {}};
  const auto told = foretoldTexts(lint_.stored);
  const auto held = changedTexts(before, after);
  auto names = namesOf(told);
  names.merge(namesOf(held));
  for (const auto& name : names) {
    URLList texts;
    for (const auto& text : textsOf(held, name)) texts.push_back(original_(text));
    part.compare(name, wordsFor(textsOf(told, name)), wordsFor(texts));
  }
  if (names.empty()) part.compare("entries", "none", "none");
  return part;
}

TrialPart Comparison::tap(const PayloadLint::Tap& told, const TapOutcome& tapped) const {
  const bool button = told.action != VorselKelp::platform::defaultActionIdentifier;
  TrialPart part{button ? "A tap on the button \"" + told.action + '"' : "A tap on the notification", {}};
  auto opens = Opens::nothing;
  std::string url;
  if (tapped.browser) {
    opens = Opens::browser;
    url = stringOf(&*tapped.browser);
  } else if (tapped.deepLink) {
    opens = Opens::deepLink;
    url = stringOf(&*tapped.deepLink);
  }
  part.compare("opens", wordsFor(told.opens, told.url), wordsFor(opens, original_(url)));
  part.compare("requests", wordsFor(told.requests), wordsFor(requestsOf(tapped)));
  return part;
}

TrialPart Comparison::stoppedCarousel(const ShowOutcome& shown) const {
  TrialPart part{"The carousel", {}};
  addStop(part, true, shown, shown.stopped);
  return part;
}

TrialPart Comparison::opening(const ShowOutcome& shown, bool keepsArrows) const {
  TrialPart part{"The carousel", {}};
  addStop(part, stops(When::pageShown, 0), shown, shown.stopped);
  if (shown.stopped) return part;
  const auto* arrows = shown.carousel ? shown.carousel->find("arrows") : nullptr;
  const auto word = [](bool visible) { return visible ? "shown" : "hidden"; };
  part.compare("arrows", word(lint_.carousel->arrows), word(arrows != nullptr && *arrows == JSONAny(true)));
  auto foretold = keepsArrows ? lint_.carousel->arrowRequests : URLList();
  foretold.insert(foretold.end(), lint_.carousel->requests.begin(), lint_.carousel->requests.end());
  part.compare("requests", wordsFor(foretold), wordsFor(requestsOf(shown)));
  return part;
}

TrialPart Comparison::page(std::size_t page, const ShowOutcome& shown, const URLList& earlier) const {
  TrialPart part{"Page " + std::to_string(page), {}};
  if (page > 0) addStop(part, stops(When::pageShown, page), shown, shown.stopped);
  if (shown.stopped) return part;
  const auto& told = lint_.carousel->pages[page];
  const auto seen = [&](const char* name) {
    auto text = memberOf(shown, name);
    if (text) text = original_(*std::move(text));
    return text;
  };
  part.compare("title", wordsFor(told.title), wordsFor(seen("title")));
  part.compare("text", wordsFor(told.text), wordsFor(seen("body")));
  // Where none comes, the one of the page before may stay. The view tells it as the payload writes it, not as
  // it goes out: that stands among the requests.
  if (told.image) {
    const auto image = seen("image");
    part.judge("picture", *told.image, wordsFor(image), image.has_value());
  }
  if (page > 0)
    part.compare("requests", wordsFor(told.requests), wordsFor(since(earlier, requestsOf(shown))));
  return part;
}

TrialPart Comparison::pageTap(std::size_t page, const ShowOutcome& tapped, const URLList& earlier) const {
  TrialPart part{"A tap on page " + std::to_string(page), {}};
  const auto& told = lint_.carousel->pages[page].tap;
  addStop(part, stops(When::pageTapped, page), tapped, tapped.stopped);
  const auto url = tapped.opened ? original_(stringOf(&*tapped.opened)) : std::string();
  part.compare("opens", wordsFor(told.opens, told.url),
               wordsFor(tapped.opened ? Opens::system : Opens::nothing, url));
  part.compare("requests", wordsFor(told.requests), wordsFor(since(earlier, requestsOf(tapped))));
  return part;
}

}  // namespace brellixctl
