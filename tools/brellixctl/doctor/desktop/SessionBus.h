#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/Result.h"

namespace brellixctl {

/// A method without arguments but texts, of whom and where.
struct BusCall {
  std::string name;
  std::string path;
  std::string method;  ///< with its interface
  std::vector<std::string> arguments;
};

/// The texts within what the method answers, in their order. The session's bus is asked by GLib's own tool,
/// with which a developer can ask it again: this program links no GLib. Starts who is called where the bus
/// can. Waits for ten seconds at most.
VorselKelp::Result<std::vector<std::string>> askBus(const BusCall& call);

/// The texts within a value as GVariant prints it.
std::vector<std::string> quotedTexts(std::string_view printed);

}  // namespace brellixctl
