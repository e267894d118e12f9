#include "push/lint/Carousel.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "base/Url.h"
#include "push/CarouselPlan.h"
#include "push/lint/Delivery.h"
#include "push/lint/Links.h"
#include "push/lint/Texts.h"

namespace VorselKelp {
namespace {

using When = PayloadLint::Stop::When;

bool holds(const Payload& payload, const char* key) {
  const auto* value = payload.root().if_contains(key);
  return value && !value->is_null();
}

std::string pathOfPage(std::size_t index) {
  return "p[" + std::to_string(index) + "]";
}

void stop(PayloadLint& lint, When when, std::size_t page, const std::string& why) {
  const char* const what = when == When::carouselOpened ? "the carousel"
                           : when == When::pageShown    ? "showing it"
                                                        : "opening it";
  lint.stops.push_back({when, page, why + "; " + what + " stops the content extension"});
}

/// Each picture once: one that is under way is not asked for again.
std::vector<std::string> pictureRequests(const std::vector<P>& messages) {
  std::set<std::string> seen;
  std::vector<std::string> urls;
  for (const P& message : messages) {
    if (message.o.image && seen.insert(*message.o.image).second) urls.push_back(*message.o.image);
  }
  return webRequests(urls);
}

void tellPageTap(PayloadLint& lint, const P& message, std::size_t index, PayloadLint::Tap& tap) {
  tap.action = platform::defaultActionIdentifier;
  const std::string where = pathOfPage(index) + ".o.data";
  const auto conversion = pageConversion(message);
  if (!conversion) return stop(lint, When::pageTapped, index, where + ": " + conversion.error().description);
  tap.requests = webRequests({conversion->t->front()});
  auto link = pageLink(conversion->url);
  if (!link)
    return stop(lint, When::pageTapped, index,
                where + ".url: " + link.error().description + hostHint(conversion->url));
  if (!link->empty()) tap.opens = PayloadLint::Tap::Opens::system;
  tap.url = *std::move(link);
  for (auto& request : adFollowUpRequests(lint)) tap.requests.push_back(std::move(request));
}

PayloadLint::Page tellPage(PayloadLint& lint, const P& message, std::size_t index) {
  PayloadLint::Page page;
  page.title = message.t;
  page.text = message.o.body;
  if (const auto picture = pagePicture(message)) {
    page.image = webUrl(*picture);
  } else if (!message.o.image) {  // one that forms no URL has stopped the carousel before
    stop(lint, When::pageShown, index, pathOfPage(index) + ".o.image: missing");
  }
  // The first page has been accounted for by the delivery.
  if (index > 0 && message.i) page.requests = webRequests(*message.i);
  tellPageTap(lint, message, index, page.tap);
  return page;
}

void warnOfPage(LintLines& warnings, const P& message, std::size_t index) {
  const std::string where = pathOfPage(index);
  const N& n = message.o;
  if (index > 0) {
    warnOfTrackers(warnings, where + ".i", message.i);
  } else if (message.i && !message.i->empty()) {
    warnings.push_back(where +
                       ".i: requested by nobody; the first page counts with its delivery, by aps.alert.t");
  }
  if (message.t) warnOfPlainText(warnings, where + ".t", *message.t);
  if (n.body) warnOfPlainText(warnings, where + ".o.body", *n.body);
  if (n.image && pagePicture(message)) warnOfPicture(warnings, where + ".o.image", *n.image);
  if (n.actions && !n.actions->empty()) warnings.push_back(where + ".o.actions: a carousel shows no buttons");
  if (!n.data) return;
  warnOfPageLink(warnings, where + ".o.data.url", n.data->url);
  warnOfTrackers(warnings, where + ".o.data.t", n.data->t);
  if (n.data->t && n.data->t->size() > 1)
    warnings.push_back(where + ".o.data.t: a carousel requests only the first one");
}

void warnOfMessages(PayloadLint& lint, const MultiMessagePush& push) {
  auto& warnings = lint.warnings;
  if (push.isMultiple == false && push.p->size() > 1)
    warnings.push_back("isMultiple: false; without arrows nobody comes to another page than the first");
  const N& first = push.p->front().o;
  if (first.el.value_or(0) < 0 || first.el.value_or(0) > 2)
    warnings.push_back("p[0].o.el: none of 0, 1 and 2; texts and pictures get no place on the pages");
  if (first.ap) warnOfPicture(warnings, "p[0].o.ap", *first.ap);
  if (first.an) warnOfPicture(warnings, "p[0].o.an", *first.an);
  for (std::size_t i = 0; i < push.p->size(); ++i) warnOfPage(warnings, (*push.p)[i], i);
}

/// A picture that forms no URL stops before anything is shown.
bool canBeOpened(PayloadLint& lint, const std::vector<P>& messages) {
  for (std::size_t i = 0; i < messages.size(); ++i) {
    const auto picture = pagePicture(messages[i]);
    if (!messages[i].o.image || picture) continue;
    stop(lint, When::carouselOpened, i,
         pathOfPage(i) + ".o.image: " + picture.error().description + hostHint(*messages[i].o.image));
  }
  return lint.stops.empty() || lint.stops.back().when != When::carouselOpened;
}

PayloadLint::Carousel tellPages(PayloadLint& lint, const MultiMessagePush& push) {
  PayloadLint::Carousel carousel;
  carousel.arrows = push.isMultiple.value_or(false);
  const N& first = push.p->front().o;
  for (const auto& arrow : {first.ap, first.an}) {
    if (arrow) std::ranges::move(webRequests({*arrow}), std::back_inserter(carousel.arrowRequests));
  }
  carousel.requests = pictureRequests(*push.p);
  for (std::size_t i = 0; i < push.p->size(); ++i) carousel.pages.push_back(tellPage(lint, (*push.p)[i], i));
  return carousel;
}

}  // namespace

void tellCarousel(PayloadLint& lint, const Payload& payload) {
  if (!holds(payload, "p") && !holds(payload, "isMultiple")) return;
  const auto complete = carouselMessages(payload);
  if (!complete) stop(lint, When::carouselOpened, 0, complete.error().description);
  // What is wrong with its pages is told whether or not they are ever shown.
  const auto push = complete ? complete : payload.multiMessagePush();
  if (!push || !push->p || push->p->empty()) return;
  warnOfMessages(lint, *push);
  const bool opens = canBeOpened(lint, *push->p) && complete;
  auto carousel = tellPages(lint, *push);
  if (opens) lint.carousel = std::move(carousel);
}

}  // namespace VorselKelp
