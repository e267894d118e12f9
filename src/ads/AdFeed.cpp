#include "ads/AdFeed.h"

#include <utility>

#include "base/Text.h"
#include "json/Decoder.h"

namespace VorselKelp {
namespace {

constexpr int ok = 200;

/// The feed takes these values as they stand on every request.
constexpr const char* fixedQuery = "&po=3&rt=1649422465953.4434&cb=ax26w6of7s&ar=fpagc&as=";

std::string feedUrl(const std::string& base, const std::string& trackId, const std::string& size,
                    const std::string& slot) {
  return base + "/v1/display/" + trackId + "?page=com.vorsel.demo&sr=" + size + "&sa=" + size + fixedQuery +
         slot + "&awh=" + size + "&ad=" + size + "&out=json";
}

}  // namespace

void AdFeed::request(int width, int height, const std::string& slot, Completion completion) {
  const auto trackId = context_->services->bundle->mainBundleText("VorselKellpTrackID");
  if (!trackId) return context_->print("No interstitial: the main bundle has no \"VorselKellpTrackID\"");
  const std::string size = std::to_string(width) + "x" + std::to_string(height);
  requests_->sendFeedGet(
      feedUrl(context_->services->endpoints.adFeed, *trackId, size, slot),
      [context = context_, completion = std::move(completion)](platform::URLResult result) {
        if (result.error) {
          completion(std::nullopt, result.error);
          context->print(result.error->description);
        } else if (result.response && result.response->statusCode == ok) {
          auto ad = json::decode<AdexObject>(std::string_view(result.body ? *result.body : std::string()));
          completion(ad ? std::optional(*std::move(ad)) : std::nullopt, std::nullopt);
        }
      });
}

void AdFeed::countImpression(const AdexObject& ad) {
  const Md* creative = ad.creative();
  if (creative && creative->cpmT && !creative->cpmT->empty())
    fireTemplate(creative->cpmT->front(), creative->l2);
}

void AdFeed::fireTemplate(const std::optional<std::string>& trackerTemplate,
                          const std::optional<std::string>& value) {
  if (!trackerTemplate || !value) return;
  requests_->sendFeedGet(replaceAll(*trackerTemplate, "${l2}", *value), [](const platform::URLResult&) {});
}

}  // namespace VorselKelp
