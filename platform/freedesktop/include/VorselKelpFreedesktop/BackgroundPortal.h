#pragma once

#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelp/platform/UniqueFunction.h"

namespace VorselKelp::freedesktop {

struct BackgroundWish {
  bool autostart = false;                ///< with the user's session; false takes an earlier wish back
  std::vector<std::string> commandLine;  ///< what is started then, in the same sandbox
  std::string reason;                    ///< for the user, who may be asked; one line
};

/// The portal that starts sandboxed applications with the user's session
/// (org.freedesktop.portal.Background); outside a sandbox it is of no use. Texts that are no UTF-8 are
/// mended.
///
/// Main thread, which has to run the default main context of GLib. Nothing blocks.
class BackgroundPortal {
 public:
  using Answer = platform::UniqueFunction<void(Result<bool>)>;

  virtual ~BackgroundPortal() = default;

  /// `answer` comes as work of the main queue, once, after as long as the user thinks: whether there is an
  /// autostart from now on; one that the user or the desktop declines is none. Or with the reason why the
  /// portal can't be asked (no bus, nobody who serves it, an error, not taken within 10 seconds). When this
  /// object or the portal goes before that, it never comes.
  virtual void ask(BackgroundWish wish, Answer answer) = 0;

  /// Whether the portal has taken every wish; a process that ends sooner may lose one.
  [[nodiscard]] virtual bool idle() const = 0;
};

/// `busAddress` empty: the bus of the user's session.
[[nodiscard]] VORSELKELP_API std::shared_ptr<BackgroundPortal> makeBackgroundPortal(
    std::shared_ptr<platform::MainQueue> mainQueue, std::string busAddress = {});

}  // namespace VorselKelp::freedesktop
