#pragma once

#include <string>

#include "VorselKelp/Result.h"

namespace gateway {

// All texts are PEM. Any thread.

/// A private key on P-256 (PKCS#8).
VorselKelp::Result<std::string> makeKey();

/// An authority of ten years that is believed for loopback names alone.
VorselKelp::Result<std::string> makeAuthority(const std::string& key);

/// A certificate of a year for this machine's loopback, signed by the authority.
VorselKelp::Result<std::string> makeServerCertificate(const std::string& key, const std::string& authority,
                                                      const std::string& authorityKey);

/// Whether it is one that holds for 30 days more.
bool lasts(const std::string& certificate);

}  // namespace gateway
