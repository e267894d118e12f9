#include "push/CarouselPlan.h"

#include <utility>

#include "base/Url.h"

namespace VorselKelp {

Result<MultiMessagePush> carouselMessages(const Payload& payload) {
  auto push = payload.multiMessagePush();
  if (!push) return Error{"the payload can't be read: " + push.error().description};
  if (!push->isMultiple) return Error{"the payload has no \"isMultiple\""};
  if (!push->p) return Error{"the payload has no \"p\""};
  if (push->p->empty()) return Error{"the payload's \"p\" holds no message"};
  return push;
}

Result<std::string> pagePicture(const P& message) {
  auto text = message.o.image.value_or("");
  if (!parseUrl(text)) return Error{"the image \"" + text + "\" forms no URL"};
  return text;
}

Result<Conversion> pageConversion(const P& message) {
  const auto& conversion = message.o.data;
  if (!conversion) return Error{"the message has no \"data\" to open"};
  if (!conversion->t || conversion->t->empty())
    return Error{"the message's \"data\" has no tracker in \"t\""};
  return *conversion;
}

Result<std::string> pageLink(const std::string& link) {
  auto url = parseUrl(link);
  if (!url) return Error{"the link \"" + link + "\" forms no URL"};
  return url->scheme.empty() ? std::string() : std::move(url->text);
}

}  // namespace VorselKelp
