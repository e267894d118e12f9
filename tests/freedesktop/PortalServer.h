#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "freedesktop/BusTest.h"

namespace VorselKelp::freedesktop {

/// The portal that shows sandboxed applications' notifications. Like the real ones it refuses what it does
/// not know, and drops icons that it does not like without a word.
class PortalServer {
 public:
  explicit PortalServer(const std::string& address, std::uint32_t version = 1);

  /// `parameters` is an array of variants, in GVariant's text format.
  void invoke(const std::string& name, const std::string& parameters);

  bool refuses = false;
  std::vector<std::string> calls;  ///< "remove NAME" or "add NAME KEYS"
  std::vector<std::string> icons;  ///< the PNG of each notification that has one

 private:
  void called(const std::string& method, GVariant* arguments, GDBusMethodInvocation* invocation);
  /// What is wrong with a notification; empty when nothing is.
  std::string added(GVariant* arguments);

  const std::uint32_t version_;
  BusService service_;
};

}  // namespace VorselKelp::freedesktop
