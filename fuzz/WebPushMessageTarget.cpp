// A message of a push service, and what a sender that knows the subscription may have put into one.

#include "VorselKelpWebPush/Base64Url.h"
#include "VorselKelpWebPush/Message.h"
#include "records/Record.h"
#include "support/Expect.h"
#include "support/Input.h"

namespace {

using namespace VorselKelp;

const webpush::ReceiverKeys keys{
    *webpush::fromBase64Url("q1dXpw3UpT5VOmu_cf_v6ih07Aems3njxI-JWgLcM94"),
    *webpush::fromBase64Url(
        "BCVxsr7N_eNgVRqvHtD0zTZsEc6-VV-JvLexhqUzORcxaOzi6-AYWXvTBHm4bjyPjs7Vd8pZGH6SRpkNtoIAiw4"),
    *webpush::fromBase64Url("BTBZMqHH6r4Tts7J_aSIgg")};
const std::string salt = *webpush::fromBase64Url("DGv6ra1nlYgDCS1FRnbzlw");
const std::string senderPoint = *webpush::fromBase64Url(
    "BP4z9KsN6nGRTbVYI_c7VJSPQTBtkgcy27mlmlMoZIIgDll6e3vCYLocInmYWAmS6TlzAC8wEqKK6PBru3jl7A8");
/// What those two agree on.
const std::string secret = *webpush::fromBase64Url("S4lYMb_L0FxCeq0WhDx813KgSYqU26kOyzWUdsXYyrg");

Result<std::string> read(const std::string& message) {
  auto text = webpush::decrypt(message, keys);
  FUZZ_EXPECT(text || !text.error().description.empty());
  FUZZ_EXPECT(text || text.error().description.find('\n') == std::string::npos);
  FUZZ_EXPECT(!text || text->size() + 103 <= message.size());
  FUZZ_EXPECT(!text || message.size() <= webpush::mostEncrypted);
  return text;
}

/// Text, delimiter and padding as they come, within a record whose tag is right.
void checkContent(std::uint32_t recordSize, const std::string& content) {
  std::string message = salt;
  for (const int shift : {24, 16, 8, 0}) message += static_cast<char>(recordSize >> shift);
  const auto record = webpush::sealRecord(content, secret, salt);
  FUZZ_EXPECT(record);
  const auto text = read(message + 'A' + senderPoint + *record);
  const auto end = content.find_last_not_of('\0');
  const bool right = end != std::string::npos && content[end] == '\2' && content.size() <= 3994 &&
                     recordSize >= 18 && record->size() <= recordSize;
  FUZZ_EXPECT(text.ok() == right);
  FUZZ_EXPECT(!right || *text == content.substr(0, end));
}

void checkRoundTrip(const std::string& text, std::size_t padding) {
  const auto message = webpush::encrypt(text, {"", keys.auth, keys.publicKey}, padding);
  FUZZ_EXPECT(message.ok() == (text.size() + padding <= webpush::mostInClear));
  if (!message) return;
  const auto opened = read(*message);
  FUZZ_EXPECT(opened && *opened == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  switch (input.choice()) {
    case 0:
      (void)read(input.all());
      break;
    case 1:
      checkContent(4096, input.all());
      break;
    case 2: {
      const auto recordSize = input.number<std::uint32_t>();
      checkContent(recordSize, input.all());
      break;
    }
    default: {
      const auto padding = input.number<std::uint16_t>();
      checkRoundTrip(input.all(), padding);
    }
  }
  return 0;
}
