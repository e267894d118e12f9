// The part for senders needs nothing of the others.

#include "VorselKelpWebPush/Message.h"

namespace webpush = VorselKelp::webpush;

int main() {
  const auto keys = webpush::makeReceiverKeys();
  if (!keys) return 1;
  const auto message = webpush::encrypt("Storm", {"https://push.example/1", keys->auth, keys->publicKey});
  const auto text = message ? webpush::decrypt(*message, *keys) : message;
  return text && *text == "Storm" ? 0 : 1;
}
