#pragma once

#include <string>
#include <vector>

namespace VorselKelp::webkit {

/// How messages come from a page's top frame and from nowhere else. The engine's own message handlers can be
/// reached from every iframe, so the only one is registered in a script world of its own, where the page has
/// no names. A script in that world, in the top frame only, passes on what a script in the page's world, in
/// the top frame only, hands it through an event with a name that nobody can guess.
class TopFrameBridge {
 public:
  static TopFrameBridge make();

  std::string world;    ///< the name of the world of its own
  std::string handler;  ///< the only handler, registered there; its messages are the JSON text [name, body]
  std::string relay;    ///< the script in that world

  /// The script in the page's world, which makes window.webkit.messageHandlers with these names.
  [[nodiscard]] std::string shim(const std::vector<std::string>& names) const;

 private:
  std::string event_;
};

}  // namespace VorselKelp::webkit
