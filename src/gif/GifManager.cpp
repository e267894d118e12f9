#include "gif/GifManager.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "gif/Player.h"

namespace VorselKelp::gif {

struct GifManager::Impl : std::enable_shared_from_this<Impl> {
  std::shared_ptr<platform::Screen> screen;
  std::shared_ptr<platform::ImageDecoder> decoder;
  std::size_t frameBudget = 0;
  std::map<const ui::ImageView*, std::shared_ptr<Player>> players;
  std::unique_ptr<platform::DisplayLink> link;  ///< made for the first animation

  std::shared_ptr<Player> find(const ui::ImageView& view) const {
    const auto at = players.find(&view);
    return at != players.end() && at->second->isIn(view) ? at->second : nullptr;
  }

  void refresh(double seconds) {
    std::vector<std::shared_ptr<Player>> now;  // showing a frame may call back into the manager
    now.reserve(players.size());
    for (const auto& [view, player] : players) now.push_back(player);
    for (const auto& player : now) player->refresh(*decoder, seconds);
    now.clear();
    tidy();
  }

  /// Forgets views that have gone, and has the screen tell of its refreshes while there is something to play.
  void tidy() {
    std::erase_if(players, [](const auto& entry) { return !entry.second->hasView(); });
    const bool playing =
        std::ranges::any_of(players, [](const auto& entry) { return entry.second->isPlaying(); });
    if (playing && !link) {
      link = screen->makeDisplayLink([self = weak_from_this()](double seconds) {
        if (const auto impl = self.lock()) impl->refresh(seconds);
      });
    }
    if (link) link->setPaused(!playing);
  }
};

GifManager::GifManager(std::shared_ptr<platform::Screen> screen,
                       std::shared_ptr<platform::ImageDecoder> decoder, std::size_t frameBudget)
    : impl_(std::make_shared<Impl>()) {
  impl_->screen = std::move(screen);
  impl_->decoder = std::move(decoder);
  impl_->frameBudget = frameBudget;
}

GifManager::~GifManager() = default;

std::shared_ptr<GifManager> GifManager::of(CoreContext& context) {
  return context.companion<GifManager>([&context] {
    return std::make_shared<GifManager>(context.services->screen, context.services->imageDecoder);
  });
}

void GifManager::show(const std::shared_ptr<ui::ImageView>& view, ui::ImagePtr image,
                      std::optional<std::size_t> frameBudget) {
  if (!view) return;
  const auto impl = impl_;
  const auto current = impl->find(*view);
  if (current && image && current->isOf(image)) {
    current->resume();
  } else {
    impl->players.erase(view.get());
    if (image && image->animation())
      impl->players[view.get()] =
          std::make_shared<Player>(view, image, frameBudget.value_or(impl->frameBudget));
    view->image = std::move(image);
  }
  impl->tidy();
}

void GifManager::stop(const ui::ImageView& view) {
  if (const auto player = impl_->find(view)) player->pause();
  impl_->tidy();
}

void GifManager::resume(const ui::ImageView& view) {
  if (const auto player = impl_->find(view)) player->resume();
  impl_->tidy();
}

void GifManager::remove(const ui::ImageView& view) {
  impl_->players.erase(&view);
  impl_->tidy();
}

bool GifManager::isAnimating(const ui::ImageView& view) const {
  const auto player = impl_->find(view);
  return player && player->isPlaying();
}

}  // namespace VorselKelp::gif
