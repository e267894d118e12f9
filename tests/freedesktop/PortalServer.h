#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "freedesktop/BusTest.h"

namespace VorselKelp::freedesktop {

/// The portal that shows sandboxed applications' notifications, and starts them with the session. Like the
/// real ones it refuses what it does not know, and drops icons that it does not like without a word.
class PortalServer {
 public:
  explicit PortalServer(const std::string& address, std::uint32_t version = 1);

  /// `parameters` is an array of variants, in GVariant's text format.
  void invoke(const std::string& name, const std::string& parameters);

  /// What becomes of a wish, 0 when it was not declined; `members` is a dictionary in GVariant's text format.
  void respond(const std::string& token, std::uint32_t outcome, const std::string& members);

  bool refuses = false;
  std::string results;             ///< what wishes are answered with, before their calls; empty: by respond()
  std::vector<std::string> calls;  ///< "remove NAME" or "add NAME KEYS"
  std::vector<std::string> icons;  ///< the PNG of each notification that has one
  struct Wish {
    std::string token;
    std::string options;  ///< in GVariant's text format
  };
  std::vector<Wish> wishes;  ///< for a life in the background

 private:
  void called(const std::string& method, GVariant* arguments, GDBusMethodInvocation* invocation);
  /// What is wrong with a notification; empty when nothing is.
  std::string added(GVariant* arguments);
  void wished(GVariant* arguments, GDBusMethodInvocation* invocation);

  const std::uint32_t version_;
  BusService service_;
};

}  // namespace VorselKelp::freedesktop
