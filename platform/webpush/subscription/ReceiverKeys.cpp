#include "VorselKelpWebPush/ReceiverKeys.h"

#include "crypto/CurveKey.h"

namespace VorselKelp::webpush {

Result<ReceiverKeys> makeReceiverKeys() {
  const auto key = CurveKey::make();
  const auto auth = randomText(16);
  if (!key || !auth) return key ? auth.error() : key.error();
  return ReceiverKeys{std::string(key->scalar().text()), key->point(), *auth};
}

}  // namespace VorselKelp::webpush
