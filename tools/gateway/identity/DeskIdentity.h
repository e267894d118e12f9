#pragma once

#include <string>

#include "VorselKelp/Result.h"

namespace gateway {

/// What a gateway on a desk has of its own, as files in PEM.
struct DeskIdentity {
  std::string authority;    ///< clients have to trust it; it can vouch for this machine's loopback alone
  std::string certificate;  ///< for "localhost", 127.0.0.1 and ::1
  std::string key;
  std::string providerKey;  ///< with which a provider signs its tokens
  std::string providerKeyIdentifier;
  std::string team;
};

/// The user's folder for it: by XDG_DATA_HOME, else by HOME.
VorselKelp::Result<std::string> deskIdentityFolder();

/// Finds it in the folder, or makes it there with access for the owner alone; a certificate that has less
/// than 30 days left is made anew, by the same authority. Several processes at once agree on one.
VorselKelp::Result<DeskIdentity> deskIdentity(const std::string& folder);

}  // namespace gateway
