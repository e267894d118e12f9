// Any JSON: what is read can be written, and reads back as the same.

#include <cmath>

#include "VorselKelp/JSONText.h"
#include "base/Text.h"
#include "json/Document.h"
#include "json/JSONFault.h"
#include "support/Expect.h"
#include "support/Input.h"

using VorselKelp::JSONAny;

namespace {

void checkRoundTrip(const JSONAny& any) {
  const auto text = any.encode();
  FUZZ_EXPECT(text);
  FUZZ_EXPECT(VorselKelp::isValidUtf8(*text));
  const auto again = JSONAny::decode(*text);
  FUZZ_EXPECT(again && *again == any);
  FUZZ_EXPECT(*again->encode() == *text);
}

void checkMembers(const JSONAny& any) {
  const auto* members = any.as<JSONAny::Dictionary>();
  if (!members) return;
  for (const auto& member : *members) {
    const auto* found = any.find(member.key);
    FUZZ_EXPECT(found == &member.value);  // no key comes twice
    checkMembers(member.value);
  }
}

void checkText(const std::string& text) {
  const auto written = JSONAny(text).encode();
  FUZZ_EXPECT(written.ok() == VorselKelp::isValidUtf8(text));
  if (!written) return;
  const auto again = JSONAny::decode(*written);
  FUZZ_EXPECT(again && *again == JSONAny(text));
}

void checkNumber(double number) {
  const auto written = JSONAny(number).encode();
  FUZZ_EXPECT(written.ok() == std::isfinite(number));
  if (!written) return;
  const auto again = JSONAny::decode(*written);
  FUZZ_EXPECT(again && again->as<double>() && *again->as<double>() == number);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::Input(data, size).all();
  const auto any = JSONAny::decode(text);
  FUZZ_EXPECT(any.ok() == VorselKelp::json::Document::parse(text).ok());
  FUZZ_EXPECT(!any || !VorselKelp::json::findJSONFault(VorselKelp::withoutByteOrderMark(text)));
  FUZZ_EXPECT(any.ok() == VorselKelp::readJSONText(text).ok());
  if (any) {
    checkRoundTrip(*any);
    checkMembers(*any);
  }
  FUZZ_EXPECT(VorselKelp::JSONNull::decode(text).ok() == (any && any->as<VorselKelp::JSONNull>()));
  checkText(text);
  checkNumber(fuzz::Input(data, size).number<double>());
  return 0;
}
