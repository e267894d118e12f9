#pragma once

#include "VorselKelp/ui/ViewController.h"

namespace news {

/// The screen that the application starts with: today's headlines.
class FrontPage final : public VorselKelp::ui::ViewController {
 public:
  void viewDidLoad() override;
};

}  // namespace news
