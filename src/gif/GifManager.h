#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "VorselKelp/ui/ImageView.h"
#include "core/CoreContext.h"

namespace VorselKelp::gif {

/// Shows pictures in image views and plays the animated ones, all of them on one display link, which pauses
/// while none plays. Views are held weakly; what a view that has gone played is forgotten. Main thread.
class GifManager {
 public:
  /// Bytes that the frames of one animation may take, its canvas included: in an extension, which the system
  /// ends when it takes too much, and in an application.
  static constexpr std::size_t defaultFrameBudget = std::size_t{4} << 20;
  static constexpr std::size_t applicationFrameBudget = std::size_t{16} << 20;

  /// `screen` and `decoder` are shared with the context's platform.
  GifManager(std::shared_ptr<platform::Screen> screen, std::shared_ptr<platform::ImageDecoder> decoder,
             std::size_t frameBudget = defaultFrameBudget);
  GifManager(const GifManager&) = delete;
  GifManager& operator=(const GifManager&) = delete;
  ~GifManager();

  /// The one of this core, made at the first call.
  static std::shared_ptr<GifManager> of(CoreContext& context);

  /// Sets the picture, and plays it from its first frame when it is animated, within `frameBudget` or the
  /// manager's own. What the view played before ends. The same picture again goes on where it is.
  void show(const std::shared_ptr<ui::ImageView>& view, ui::ImagePtr image,
            std::optional<std::size_t> frameBudget = std::nullopt);
  /// Stops playing; the view keeps the frame that it shows. Nobody tells the manager of a view that goes
  /// while nothing plays: what was stopped and will not be resumed is to be removed.
  void stop(const ui::ImageView& view);
  /// Goes on with what was stopped.
  void resume(const ui::ImageView& view);
  /// Forgets the view; it keeps the frame that it shows.
  void remove(const ui::ImageView& view);
  [[nodiscard]] bool isAnimating(const ui::ImageView& view) const;

 private:
  struct Impl;
  std::shared_ptr<Impl> impl_;
};

}  // namespace VorselKelp::gif
