#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/ui/Button.h"
#include "VorselKelp/ui/ViewController.h"

namespace VorselKelp::gtk {

/// The system's question whether an application may show notifications: a card over the whole window.
class PermissionSheet final : public ui::ViewController {
 public:
  struct Look {
    bool dark = false;
    double textScale = 1;
  };
  /// `answered` runs once, with what the user chose; absent when nobody can choose any more.
  PermissionSheet(std::string application, Look look,
                  std::function<void(std::optional<bool> allowed)> answered)
      : application_(std::move(application)), look_(look), answered_(std::move(answered)) {}

  void viewDidLoad() override;
  void answer(std::optional<bool> allowed);
  /// Null before the view is loaded.
  [[nodiscard]] const std::shared_ptr<ui::Button>& button(bool allow) const { return allow ? allow_ : deny_; }

 private:
  void addTexts(ui::View& card);
  void addButtons(ui::View& card);
  std::shared_ptr<ui::Button> makeButton(const char* title, bool allowed);

  const std::string application_;
  const Look look_;
  std::function<void(std::optional<bool>)> answered_;
  std::shared_ptr<ui::Button> allow_;
  std::shared_ptr<ui::Button> deny_;
};

}  // namespace VorselKelp::gtk
