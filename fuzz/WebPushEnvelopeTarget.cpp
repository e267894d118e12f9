// What a gateway has put into a payload, and what a sender may have put there in its place.

#include "VorselKelp/JSONAny.h"
#include "VorselKelpWebPush/Envelope.h"
#include "support/Expect.h"
#include "support/Input.h"

namespace {

using namespace VorselKelp;

bool isObject(std::string_view text) {
  const auto json = JSONAny::decode(text);
  return json && json->as<JSONAny::Dictionary>() != nullptr;
}

void checkUnwrapping(const std::string& text) {
  const auto unwrapped = webpush::unwrap(text);
  if (!unwrapped) {
    FUZZ_EXPECT(unwrapped.error().description.find('\n') == std::string::npos);
    return;
  }
  FUZZ_EXPECT(unwrapped->payload.size() <= text.size());
  FUZZ_EXPECT(unwrapped->envelope.collapse.size() <= 64);
  FUZZ_EXPECT(!isObject(text) || isObject(unwrapped->payload));
}

void checkRoundTrip(const std::string& payload, const webpush::Envelope& envelope) {
  const auto wrapped = webpush::putInto(envelope, payload);
  if (!wrapped || !isObject(payload)) return;
  FUZZ_EXPECT(isObject(*wrapped));
  const auto unwrapped = webpush::unwrap(*wrapped);
  FUZZ_EXPECT(unwrapped && unwrapped->payload == payload && unwrapped->envelope == envelope);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const auto expiration = input.number<std::int64_t>();
  const auto text = input.all();
  checkUnwrapping(text);
  checkRoundTrip(text, {"1", text.substr(0, 20), expiration});
  checkRoundTrip(R"({"a":")" + text + "\"}", {text.substr(0, 64), "", {}});
  return 0;
}
