#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "content_ext/ImageCache.h"
#include "core/CoreContext.h"
#include "gif/GifManager.h"
#include "net/VorselRequest.h"

namespace VorselKelp {

/// Fetches the pictures of a carousel's messages and shows that of the current one. A picture that is under
/// way is never asked for twice. Answers that come after this object has gone are dropped.
class CarouselImages : public std::enable_shared_from_this<CarouselImages> {
 public:
  /// `view` is held weakly.
  CarouselImages(std::shared_ptr<CoreContext> context, std::shared_ptr<VorselRequest> requests,
                 std::weak_ptr<ui::ImageView> view);

  /// Fetches a picture that will be shown later. Any thread.
  void prefetch(const std::string& url);
  /// Shows a picture: at once when it is there, else when it comes, if it is still this one that is to be
  /// shown; until then, and when it never comes, the view stays as it is. Data that is no picture clears it.
  /// Never waits. One that fails is fetched anew at the next call. Main thread.
  void show(const std::string& url);
  /// Null when it is not there. Any thread.
  [[nodiscard]] ui::ImagePtr cached(const std::string& url);

 private:
  /// How far a picture has come that is not there.
  enum class Fetch { ahead, awaited, unusable };

  /// Whether the picture is to be downloaded, `ahead` of time or because it is `awaited`; remembers that it
  /// is. Under the lock.
  [[nodiscard]] bool begin(const std::string& url, Fetch why);
  void download(const std::string& url);
  /// Session's delegate queue.
  void downloaded(const std::string& url, const platform::URLResult& result);
  /// The download has failed. Answers whether the picture was awaited.
  bool fail(const std::string& url);
  /// The download has brought this; null for what is no picture.
  void keep(const std::string& url, const ui::ImagePtr& image);
  /// Whether it is this one that is to be shown.
  [[nodiscard]] bool isCurrent(const std::string& url);
  /// Null clears the view. Main thread.
  void present(const std::string& url, ui::ImagePtr image);

  const std::shared_ptr<CoreContext> context_;
  const std::shared_ptr<VorselRequest> requests_;
  const std::shared_ptr<gif::GifManager> animations_;
  const std::weak_ptr<ui::ImageView> view_;
  std::string inView_;  ///< URL of the picture that the view was given last; main thread
  std::mutex mutex_;
  std::string current_;  ///< URL of the picture that is to be shown
  ImageCache cache_;
  std::map<std::string, Fetch> fetches_;  ///< by URL; unusable: came in good order, and is no picture
};

}  // namespace VorselKelp
