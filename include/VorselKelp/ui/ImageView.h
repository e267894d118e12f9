#pragma once

#include "VorselKelp/Export.h"
#include "VorselKelp/ui/Image.h"
#include "VorselKelp/ui/View.h"

namespace VorselKelp::ui {

/// Shows one picture, fitted by its content mode. An animated one is shown by setting frame after frame.
class VORSELKELP_API ImageView : public View {
 public:
  Property<ImagePtr> image{*this, nullptr};

  void accept(ViewVisitor& visitor) override;
};

/// Turns for as long as something is under way; shows nothing while it stands still.
class VORSELKELP_API ActivityIndicator : public View {
 public:
  Property<bool> animating{*this, false};

  void startAnimating() { animating = true; }
  void stopAnimating() { animating = false; }

  void accept(ViewVisitor& visitor) override;
};

}  // namespace VorselKelp::ui
