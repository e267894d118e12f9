// A gateway with 10,000 devices that take their notifications and do nothing with them: served_gateway
// FOLDER, where the keys lie, prints its port, the value of a provider's header and a device's token, and
// serves until it is ended.

#include <openssl/ecdsa.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <sys/resource.h>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <memory>
#include <sstream>
#include <thread>

#include "VorselKelpPosix/EventLoop.h"
#include "VorselKelpPosix/Hex.h"
#include "VorselKelpWebPush/Base64Url.h"
#include "gateway/Gateway.h"
#include "gateway/devices/MemoryDevices.h"
#include "gateway/identity/DeskIdentity.h"

namespace {

using VorselKelp::webpush::toBase64Url;

constexpr int devices = 10'000;

std::string tokenOf(int number) {
  std::string token(32, '\x5a');
  for (int i = 0; i < 4; ++i) token[static_cast<std::size_t>(i)] = static_cast<char>(number >> (8 * i));
  return token;
}

std::string textOf(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

/// The two numbers of a signature one behind the other, as tokens have them.
std::string sign(const std::string& pem, const std::string& text) {
  BIO* source = BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size()));
  EVP_PKEY* key = PEM_read_bio_PrivateKey(source, nullptr, nullptr, nullptr);
  EVP_MD_CTX* context = EVP_MD_CTX_new();
  std::string der(128, '\0');
  std::size_t size = der.size();
  EVP_DigestSignInit(context, nullptr, EVP_sha256(), nullptr, key);
  EVP_DigestSign(context, reinterpret_cast<unsigned char*>(der.data()), &size,
                 reinterpret_cast<const unsigned char*>(text.data()), text.size());
  const auto* bytes = reinterpret_cast<const unsigned char*>(der.data());
  ECDSA_SIG* signature = d2i_ECDSA_SIG(nullptr, &bytes, static_cast<long>(size));
  std::string raw(64, '\0');
  BN_bn2binpad(ECDSA_SIG_get0_r(signature), reinterpret_cast<unsigned char*>(raw.data()), 32);
  BN_bn2binpad(ECDSA_SIG_get0_s(signature), reinterpret_cast<unsigned char*>(raw.data()) + 32, 32);
  ECDSA_SIG_free(signature);
  EVP_MD_CTX_free(context);
  EVP_PKEY_free(key);
  BIO_free(source);
  return raw;
}

std::string bearer(const gateway::DeskIdentity& identity) {
  const auto text =
      toBase64Url(R"({"alg":"ES256","kid":")" + identity.providerKeyIdentifier + "\"}") + "." +
      toBase64Url(R"({"iss":")" + identity.team + R"(","iat":)" + std::to_string(std::time(nullptr)) + "}");
  return "bearer " + text + "." + toBase64Url(sign(textOf(identity.providerKey), text));
}

std::shared_ptr<gateway::MemoryDevices> makeDevices(
    const std::shared_ptr<VorselKelp::posix::EventLoop>& loop) {
  std::vector<std::string> tokens;
  for (int i = 0; i < devices; ++i) tokens.push_back(tokenOf(i));
  return std::make_shared<gateway::MemoryDevices>(tokens, "com.example.app", [loop] { loop->wake(); });
}

}  // namespace

int main(int, char** argv) {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
  const auto identity = gateway::deskIdentity(argv[1]);
  if (!identity) return 1;
  const auto loop = std::make_shared<VorselKelp::posix::EventLoop>();
  gateway::GatewayOptions options;
  options.certificate = identity->certificate;
  options.key = identity->key;
  options.providerKeys.push_back({identity->providerKeyIdentifier, identity->team,
                                  *gateway::VerifyingKey::ofPem(textOf(identity->providerKey))});
  const auto received = makeDevices(loop);
  options.hops.push_back(received);
  const auto served = gateway::Gateway::make(std::move(options));
  if (!served) return 1;
  std::printf("%u\n%s\n%s\n", (*served)->port(), bearer(*identity).c_str(),
              VorselKelp::posix::hexOf(tokenOf(0)).c_str());
  std::fflush(stdout);
  std::thread receiving([&] {
    using Clock = VorselKelp::posix::EventLoop::Clock;
    const auto takeAll = [&] {
      while (received->next()) {
      }
      return false;
    };
    loop->run(takeAll, Clock::now() + std::chrono::hours(1));
  });
  (*served)->run();
  return 0;
}
