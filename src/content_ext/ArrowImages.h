#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/ui/Button.h"
#include "core/CoreContext.h"
#include "net/VorselRequest.h"

namespace VorselKelp {

/// The pictures of a carousel's arrows. Downloaded ones are kept in a container of the extension's, where
/// later notifications find them; nothing removes them. Buttons are held weakly.
class ArrowImages : public std::enable_shared_from_this<ArrowImages> {
 public:
  ArrowImages(std::shared_ptr<CoreContext> context, std::shared_ptr<VorselRequest> requests)
      : context_(std::move(context)), requests_(std::move(requests)) {}

  /// Gives the button a picture that comes with the library.
  void setBuiltIn(std::string_view name, ui::Button& button) const;
  /// Gives the button the kept picture of this URL, or downloads and keeps it. Without a container nothing is
  /// shown. Blocks for the file system. `whose` names the view on the console.
  void load(const std::string& urlText, const std::shared_ptr<ui::Button>& button, const std::string& whose);

 private:
  [[nodiscard]] std::optional<std::string> container() const;
  /// Null when none is kept, or what is kept is no picture.
  [[nodiscard]] ui::ImagePtr kept(const std::string& container, const std::string& urlText) const;
  void download(const std::string& urlText, const std::weak_ptr<ui::Button>& button);
  /// Session's delegate queue.
  void downloaded(const std::string& urlText, const platform::URLResult& result,
                  const std::weak_ptr<ui::Button>& button) const;
  void save(const std::string& urlText, const std::string& bytes) const;
  void setLater(const std::weak_ptr<ui::Button>& button, ui::ImagePtr image) const;

  const std::shared_ptr<CoreContext> context_;
  const std::shared_ptr<VorselRequest> requests_;
};

}  // namespace VorselKelp
