#include "VorselKelpSystem/NotificationRecords.h"
#include "brellixctl/LintReports.h"

namespace brellixctl {

using VorselKelp::JSONAny;
using VorselKelp::PayloadLint;
namespace system = VorselKelp::system;

namespace {

using Opens = PayloadLint::Tap::Opens;

JSONAny toldText(const std::optional<std::string>& text) {
  return text ? JSONAny(*text) : JSONAny();
}

JSONAny toldText(const std::string& text) {
  return text.empty() ? JSONAny() : JSONAny(text);
}

JSONAny toldList(const std::vector<std::string>& texts) {
  return JSONAny::List(texts.begin(), texts.end());
}

template <class T, class Convert>
JSONAny toldList(const std::vector<T>& values, Convert convert) {
  JSONAny::List list;
  for (const auto& value : values) list.push_back(convert(value));
  return list;
}

JSONAny rootName(PayloadLint::Root root) {
  if (root == PayloadLint::Root::push) return "push";
  if (root == PayloadLint::Root::campaign) return "campaign";
  return {};
}

const char* openerName(Opens opens) {
  if (opens == Opens::browser) return "browser";
  if (opens == Opens::deepLink) return "deepLink";
  return opens == Opens::system ? "system" : "nothing";
}

JSONAny shownJSON(const PayloadLint::Shown& shown) {
  JSONAny sound;
  if (shown.sound) sound = shown.sound->name.value_or("default");
  return JSONAny::Dictionary{{"title", shown.title},
                             {"subtitle", shown.subtitle},
                             {"body", shown.body},
                             {"sound", std::move(sound)},
                             {"badge", shown.badge ? JSONAny(*shown.badge) : JSONAny()},
                             {"category", toldText(shown.category)},
                             {"actions", system::encodeActions(shown.actions)},
                             {"image", toldText(shown.image)},
                             {"ad", shown.ad}};
}

JSONAny tapJSON(const PayloadLint::Tap& tap) {
  return JSONAny::Dictionary{{"action", tap.action},
                             {"opens", openerName(tap.opens)},
                             {"url", toldText(tap.url)},
                             {"requests", toldList(tap.requests)}};
}

JSONAny pageJSON(const PayloadLint::Page& page) {
  return JSONAny::Dictionary{{"title", toldText(page.title)},
                             {"text", toldText(page.text)},
                             {"image", toldText(page.image)},
                             {"requests", toldList(page.requests)},
                             {"tap", tapJSON(page.tap)}};
}

JSONAny carouselJSON(const PayloadLint::Carousel& carousel) {
  return JSONAny::Dictionary{{"arrows", carousel.arrows},
                             {"arrowRequests", toldList(carousel.arrowRequests)},
                             {"requests", toldList(carousel.requests)},
                             {"pages", toldList(carousel.pages, pageJSON)}};
}

JSONAny storedJSON(const PayloadLint::Stored& stored) {
  return JSONAny::Dictionary{{"key", stored.key}, {"entry", stored.entry}, {"text", stored.text}};
}

template <class Records>
JSONAny regionNames(const Records& records) {
  return toldList(records, [](const auto& record) { return JSONAny(record.id); });
}

JSONAny silentJSON(const PayloadLint::Silent& silent) {
  const auto& [geofences, beacons] = silent;
  return JSONAny::Dictionary{{"geofences", geofences ? regionNames(geofences->gl) : JSONAny()},
                             {"beacons", beacons ? regionNames(beacons->bl) : JSONAny()}};
}

}  // namespace

JSONAny::Dictionary toJSON(const PayloadLint& lint) {
  return JSONAny::Dictionary{
      {"root", rootName(lint.root)},
      {"errors", toldList(lint.errors)},
      {"stops", toldList(lint.stops, [](const auto& stop) { return JSONAny(stop.text); })},
      {"warnings", toldList(lint.warnings)},
      {"silent", lint.silent ? silentJSON(*lint.silent) : JSONAny()},
      {"shows", lint.silent ? JSONAny() : shownJSON(lint.shows)},
      {"requests", toldList(lint.requests)},
      {"stored", toldList(lint.stored, storedJSON)},
      {"taps", toldList(lint.taps, tapJSON)},
      {"carousel", lint.carousel ? carouselJSON(*lint.carousel) : JSONAny()}};
}

}  // namespace brellixctl
