#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/ui/Appearance.h"
#include "VorselKelp/ui/Geometry.h"
#include "VorselKelp/ui/Layout.h"
#include "VorselKelp/ui/Property.h"

namespace VorselKelp::ui {

class View;
class ViewVisitor;

/// An archive from which views are restored. The library's own views can't be: their constructors that take
/// one stop the process.
struct Coder {};

/// Hears what changes in a tree of views, so that it can be shown. Main thread.
class ViewObserver {
 public:
  virtual ~ViewObserver() = default;
  virtual void propertiesChanged(View& view) = 0;
  /// Subviews came, went or changed their order, or the constraints that `view` holds did.
  virtual void structureChanged(View& view) = 0;
  virtual void layoutNeeded(View& view) = 0;
};

/// A rectangle on the screen, and what is in it: one node of the tree that a platform shows. Made with
/// std::make_shared; a view keeps its subviews. Main thread only.
///
/// The platform works out frames from the constraints, sets them, and runs a layout pass; it sends taps to
/// tapped(). A view without constraints keeps the frame that it was given.
class VORSELKELP_API View : public std::enable_shared_from_this<View>, public PropertyOwner {
 public:
  View() = default;
  explicit View(Rect frame_) { frame = frame_; }
  View(const View&) = delete;
  View& operator=(const View&) = delete;
  virtual ~View();

  /// In the superview's coordinates.
  Property<Rect> frame{*this, {}};
  Property<std::optional<Color>> backgroundColor{*this, std::nullopt};
  Property<double> alpha{*this, 1};
  Property<bool> hidden{*this, false};
  Property<bool> userInteractionEnabled{*this, true};
  Property<ContentMode> contentMode{*this, ContentMode::scaleToFill};
  Property<double> cornerRadius{*this, 0};
  Property<double> borderWidth{*this, 0};
  Property<Color> borderColor{*this, Color::black()};
  /// What the view is called for a user who can't see it, in English: a platform translates it. Empty for one
  /// that says it by its text, or says nothing.
  Property<std::string> accessibilityLabel{*this, {}};
  /// Whether the frame, growing with the superview, stands for constraints.
  Property<bool> translatesAutoresizingMaskIntoConstraints{*this, true};

  /// Puts the view on top of the other subviews; takes it from where it was before.
  void addSubview(std::shared_ptr<View> view);
  void removeFromSuperview();
  [[nodiscard]] const std::vector<std::shared_ptr<View>>& subviews() const { return subviews_; }
  [[nodiscard]] View* superview() const { return superview_; }
  /// Whether `view` is this view or somewhere below it.
  [[nodiscard]] bool contains(const View& view) const;

  [[nodiscard]] Anchor anchor(Attribute attribute, Edges edges = Edges::view);
  [[nodiscard]] Anchor leading() { return anchor(Attribute::leading); }
  [[nodiscard]] Anchor trailing() { return anchor(Attribute::trailing); }
  [[nodiscard]] Anchor top() { return anchor(Attribute::top); }
  [[nodiscard]] Anchor bottom() { return anchor(Attribute::bottom); }
  [[nodiscard]] Anchor width() { return anchor(Attribute::width); }
  [[nodiscard]] Anchor height() { return anchor(Attribute::height); }
  [[nodiscard]] Anchor centerX() { return anchor(Attribute::centerX); }
  [[nodiscard]] Anchor centerY() { return anchor(Attribute::centerY); }
  /// Constraints between this view and views below it, kept here.
  void activate(std::vector<Constraint> constraints);
  [[nodiscard]] const std::vector<Constraint>& constraints() const { return constraints_; }

  /// `action` runs when the view is tapped.
  void addTapRecognizer(std::function<void()> action);
  [[nodiscard]] bool hearsTaps() const;
  /// The platform's hand: the user touched the view and let go inside it. Nothing happens to a view that is
  /// hidden or takes no touches.
  void tap();

  /// Asks for a layout pass, soon.
  void setNeedsLayout();
  /// What a layout pass does in this view; the base has nothing to do.
  virtual void layoutSubviews() {}
  /// A layout pass over this view and everything below it. For the platform, after it has set the frames.
  void performLayout();

  virtual void accept(ViewVisitor& visitor);

  /// For the platform that shows the tree: hears of this view and of everything below it. One at a time.
  void setObserver(std::weak_ptr<ViewObserver> observer) { observer_ = std::move(observer); }

  void propertyChanged() final;

 protected:
  /// What a tap does; the base runs the recognisers.
  virtual void handleTap();
  [[nodiscard]] virtual bool hasTapTargets() const { return !recognizers_.empty(); }

 private:
  void tell(void (ViewObserver::*event)(View&));

  View* superview_ = nullptr;
  std::vector<std::shared_ptr<View>> subviews_;
  std::vector<Constraint> constraints_;
  std::vector<std::function<void()>> recognizers_;
  std::weak_ptr<ViewObserver> observer_;
};

}  // namespace VorselKelp::ui
