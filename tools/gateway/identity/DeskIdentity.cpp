#include "gateway/identity/DeskIdentity.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "VorselKelpPosix/Descriptor.h"
#include "VorselKelpPosix/DescriptorWriter.h"
#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/LockFile.h"
#include "gateway/identity/Certificates.h"

namespace gateway {

using VorselKelp::Done;
using VorselKelp::Error;
using VorselKelp::Result;
using VorselKelp::Status;
namespace posix = VorselKelp::posix;

namespace {

constexpr std::size_t longestFile = std::size_t{64} << 10;
constexpr std::size_t identifierLength = 10;
constexpr std::string_view keyPrefix = "AuthKey_";
constexpr std::string_view keySuffix = ".p8";

/// There whole or not at all.
Status write(const std::string& path, const std::string& text) {
  const auto fresh = path + ".new";
  posix::Descriptor file(::open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (file.number() < 0 || !posix::writeAll(file.number(), text) || ::fsync(file.number()) != 0 ||
      !file.close() || ::rename(fresh.c_str(), path.c_str()) != 0)
    return posix::systemError(path);
  return Done{};
}

/// The file's text; what `make` makes when there is none or `good` says no.
template <class Make, class Good>
Result<std::string> find(const std::string& path, Make make, Good good) {
  if (auto there = posix::readWholeFile(path, longestFile); there && good(*there)) return there;
  auto made = make();
  if (!made) return made;
  if (const auto written = write(path, *made); !written) return written.error();
  return made;
}

Result<std::string> randomIdentifier() {
  constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ234567";
  std::string text(identifierLength, '\0');
  if (::getrandom(text.data(), text.size(), 0) < 0) return posix::systemError("random numbers");
  for (auto& c : text) c = letters[static_cast<unsigned char>(c) % letters.size()];
  return text;
}

/// Of the provider's key that lies there; empty when none does.
std::string identifierIn(const std::string& folder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> opened(::opendir(folder.c_str()), &::closedir);
  while (const auto* entry = opened ? ::readdir(opened.get()) : nullptr) {
    const std::string_view name = entry->d_name;
    if (name.size() == keyPrefix.size() + identifierLength + keySuffix.size() &&
        name.starts_with(keyPrefix) && name.ends_with(keySuffix))
      return std::string(name.substr(keyPrefix.size(), identifierLength));
  }
  return {};
}

bool always(const std::string&) {
  return true;
}

Result<DeskIdentity> findOrMake(const std::string& folder) {
  DeskIdentity identity{folder + "/authority.pem", folder + "/server.pem",
                        folder + "/server.key",    {},
                        identifierIn(folder),      "DESKTEAM01"};
  if (identity.providerKeyIdentifier.empty()) {
    const auto made = randomIdentifier();
    if (!made) return made.error();
    identity.providerKeyIdentifier = *made;
  }
  identity.providerKey = folder + "/";
  identity.providerKey.append(keyPrefix).append(identity.providerKeyIdentifier).append(keySuffix);
  const auto providerKey = find(identity.providerKey, makeKey, always);
  if (!providerKey) return providerKey.error();
  const auto authorityKey = find(folder + "/authority.key", makeKey, always);
  if (!authorityKey) return authorityKey.error();
  bool renewed = false;
  const auto authority = find(
      identity.authority,
      [&] {
        renewed = true;
        return makeAuthority(*authorityKey);
      },
      lasts);
  if (!authority) return authority.error();
  const auto key = find(identity.key, makeKey, always);
  if (!key) return key.error();
  const auto certificate = find(
      identity.certificate, [&] { return makeServerCertificate(*key, *authority, *authorityKey); },
      [&](const std::string& text) { return !renewed && lasts(text); });
  if (!certificate) return certificate.error();
  return identity;
}

}  // namespace

Result<std::string> deskIdentityFolder() {
  const auto* data = std::getenv("XDG_DATA_HOME");
  if (data && *data == '/') return std::string(data) + "/brellixctl/gateway";
  const auto* home = std::getenv("HOME");
  if (home && *home == '/') return std::string(home) + "/.local/share/brellixctl/gateway";
  return Error{"Neither XDG_DATA_HOME nor HOME says where the gateway's keys may lie"};
}

Result<DeskIdentity> deskIdentity(const std::string& folder) {
  if (const auto made = posix::makeFolders(folder); !made) return made.error();
  const auto lock = posix::lockFile(folder + "/lock");
  if (!lock) return lock.error();
  return findOrMake(folder);
}

}  // namespace gateway
