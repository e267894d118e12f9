#include "gateway/DeviceName.h"

#include <openssl/evp.h>

#include <cstddef>

#include "VorselKelpPosix/Hex.h"

namespace gateway {
namespace {

// Bytes.
constexpr std::size_t longestOfPhone = 32;
constexpr std::size_t shownOfPhone = 4;
constexpr std::size_t shownOfDigest = 8;

}  // namespace

std::string nameOf(std::string_view device) {
  if (device.size() <= longestOfPhone) return VorselKelp::posix::hexOf(device.substr(0, shownOfPhone));
  // Of the digits, for that is what a provider has to look for.
  const auto digits = VorselKelp::posix::hexOf(device);
  std::string digest(EVP_MAX_MD_SIZE, '\0');
  if (EVP_Q_digest(nullptr, "SHA256", nullptr, digits.data(), digits.size(),
                   reinterpret_cast<unsigned char*>(digest.data()), nullptr) != 1)
    return {};
  return VorselKelp::posix::hexOf(digest.substr(0, shownOfDigest));
}

}  // namespace gateway
