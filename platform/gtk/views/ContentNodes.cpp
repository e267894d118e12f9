#include <algorithm>
#include <string>
#include <utility>

#include "VorselKelp/ui/NavigationBar.h"
#include "VorselKelpGtk/WidgetWebView.h"
#include "views/ViewNode.h"

namespace VorselKelp::gtk {
namespace {

ViewNode::Extent textExtent(GtkWidget* widget, const TextStyle& style, GtkOrientation orientation,
                            int forSize, int minimumWidth) {
  const bool horizontal = orientation == GTK_ORIENTATION_HORIZONTAL;
  const auto layout = layoutText(widget, style, horizontal || style.lines == 1 ? -1 : forSize);
  int width = 0;
  int height = 0;
  pango_layout_get_pixel_size(layout.get(), &width, &height);
  if (horizontal) return {std::min(minimumWidth, width), width};
  return {height, height};
}

class LabelNode final : public ViewNode {
 public:
  explicit LabelNode(ui::Label& label) : ViewNode(label, GTK_ACCESSIBLE_ROLE_LABEL), label_(label) {}

  void update() override {
    ViewNode::update();
    describe(label_.text.get().value_or(""));
    gtk_widget_queue_resize(widget());
  }
  OwnSize ownSize() override {
    return {measure(GTK_ORIENTATION_HORIZONTAL, -1).natural, measure(GTK_ORIENTATION_VERTICAL, -1).natural,
            true};
  }
  Extent measure(GtkOrientation orientation, int forSize) override {
    // Constraints are solved without asking what height goes with a width: what wraps asks for the width that
    // it got last.
    return textExtent(widget(), style(), orientation, wrapWidth_ > 0 ? wrapWidth_ : forSize, 0);
  }
  void paint(GtkSnapshot* snapshot, double width, double height) override {
    ViewNode::paint(snapshot, width, height);
    paintText(snapshot, widget(), style(), width, height);
  }
  void placed(double width, double) override {
    if (label_.numberOfLines.get() == 1 || static_cast<int>(width) == wrapWidth_) return;
    wrapWidth_ = static_cast<int>(width);
    g_idle_add_once([](gpointer kept) { gtk_widget_queue_resize(GTK_WIDGET(kept)), g_object_unref(kept); },
                    g_object_ref(widget()));
  }

 private:
  [[nodiscard]] TextStyle style() const {
    return {label_.text.get().value_or(""), label_.font, label_.textColor, label_.textAlignment,
            label_.numberOfLines};
  }
  ui::Label& label_;
  int wrapWidth_ = 0;
};

class ImageNode final : public ViewNode {
 public:
  explicit ImageNode(ui::ImageView& view) : ViewNode(view, GTK_ACCESSIBLE_ROLE_IMG), image_(view) {}

  void paint(GtkSnapshot* snapshot, double width, double height) override {
    ViewNode::paint(snapshot, width, height);
    picture_.paint(snapshot, image_.image, image_.contentMode, width, height);
  }

 private:
  ui::ImageView& image_;
  Picture picture_;
};

class ButtonNode final : public ViewNode {
 public:
  explicit ButtonNode(ui::Button& button) : ViewNode(button, GTK_ACCESSIBLE_ROLE_BUTTON), button_(button) {}

  void update() override {
    ViewNode::update();
    describe(button_.title);
    gtk_widget_queue_resize(widget());
  }
  Extent measure(GtkOrientation orientation, int forSize) override {
    if (button_.title.get().empty()) return {};
    auto extent = textExtent(widget(), style(), orientation, forSize, 0);
    extent.natural += 2 * (orientation == GTK_ORIENTATION_HORIZONTAL ? sideRoom : topRoom);
    return {0, extent.natural};
  }
  OwnSize ownSize() override {
    if (button_.title.get().empty()) return {};
    return {measure(GTK_ORIENTATION_HORIZONTAL, -1).natural, measure(GTK_ORIENTATION_VERTICAL, -1).natural};
  }
  void paint(GtkSnapshot* snapshot, double width, double height) override {
    ViewNode::paint(snapshot, width, height);
    picture_.paint(snapshot, button_.backgroundImage, button_.imageContentMode, width, height);
    if (!button_.title.get().empty()) paintText(snapshot, widget(), style(), width, height);
  }

 private:
  static constexpr int sideRoom = 12;
  static constexpr int topRoom = 6;

  [[nodiscard]] TextStyle style() const {
    return {button_.title, button_.font, button_.titleColor, ui::TextAlignment::center, 1};
  }
  ui::Button& button_;
  Picture picture_;
};

/// A view whose content is a widget of the toolkit's, over its whole area.
class WrappingNode : public ViewNode {
 public:
  WrappingNode(ui::View& view, GtkWidget* content) : ViewNode(view), content_(content) {
    gtk_widget_set_layout_manager(widget(), gtk_bin_layout_new());
    gtk_widget_set_parent(content_, widget());
  }
  ~WrappingNode() override { gtk_widget_unparent(content_); }
  GtkConstraintLayout* constraintLayout() override { return nullptr; }

 protected:
  [[nodiscard]] GtkWidget* content() const { return content_; }

 private:
  GtkWidget* content_;
};

class IndicatorNode final : public WrappingNode {
 public:
  explicit IndicatorNode(ui::ActivityIndicator& indicator)
      : WrappingNode(indicator, gtk_spinner_new()), indicator_(indicator) {
    gtk_widget_set_size_request(content(), side, side);
  }
  void update() override {
    ViewNode::update();
    gtk_spinner_set_spinning(GTK_SPINNER(content()), indicator_.animating);
  }

 private:
  static constexpr int side = 20;
  ui::ActivityIndicator& indicator_;
};

GtkWidget* newScrolledLabel() {
  auto* label = gtk_label_new(nullptr);
  gtk_label_set_wrap(GTK_LABEL(label), TRUE);
  gtk_label_set_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
  gtk_label_set_yalign(GTK_LABEL(label), 0);
  auto* scrolled = gtk_scrolled_window_new();
  // It insists on no width: the one that the constraints of its parents find might be less.
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scrolled), GTK_POLICY_EXTERNAL, GTK_POLICY_AUTOMATIC);
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled), label);
  return scrolled;
}

class TextNode final : public WrappingNode {
 public:
  explicit TextNode(ui::TextView& view) : WrappingNode(view, newScrolledLabel()), text_(view) {
    // The scrolled text would swallow the taps that are the view's.
    gtk_widget_set_can_target(content(), FALSE);
  }
  void update() override {
    ViewNode::update();
    auto* viewport = gtk_scrolled_window_get_child(GTK_SCROLLED_WINDOW(content()));
    auto* label = GTK_LABEL(gtk_viewport_get_child(GTK_VIEWPORT(viewport)));
    gchar* valid = g_utf8_make_valid(text_.text.get().c_str(), -1);
    gtk_label_set_text(label, valid);
    g_free(valid);
    gtk_label_set_xalign(label, text_.textAlignment.get() == ui::TextAlignment::center  ? 0.5F
                                : text_.textAlignment.get() == ui::TextAlignment::right ? 1.0F
                                                                                        : 0.0F);
    auto* attributes = pango_attr_list_new();
    const auto& color = text_.textColor.get();
    const auto part = [](double value) { return static_cast<guint16>(value * 65535); };
    pango_attr_list_insert(attributes, pango_attr_size_new_absolute(static_cast<int>(
                                           text_.font.get().size * textScale(widget()) * PANGO_SCALE)));
    pango_attr_list_insert(attributes,
                           pango_attr_foreground_new(part(color.red), part(color.green), part(color.blue)));
    if (text_.font.get().bold) {
      pango_attr_list_insert(attributes, pango_attr_weight_new(PANGO_WEIGHT_BOLD));
    }
    gtk_label_set_attributes(label, attributes);
    pango_attr_list_unref(attributes);
  }

 private:
  ui::TextView& text_;
};

class BarNode final : public ViewNode {
 public:
  explicit BarNode(ui::NavigationBar& bar) : ViewNode(bar), bar_(bar), button_(gtk_button_new()) {
    gtk_button_set_has_frame(GTK_BUTTON(button_), FALSE);
    g_signal_connect(button_, "clicked", G_CALLBACK(+[](GtkButton*, gpointer tapped) {
                       static_cast<ui::NavigationBar*>(tapped)->tapLeftButton();
                     }),
                     &bar_);
    gtk_widget_set_parent(button_, widget());
    auto* layout = constraintLayout();
    pin(layout, GTK_CONSTRAINT_ATTRIBUTE_START, sideRoom);
    pin(layout, GTK_CONSTRAINT_ATTRIBUTE_CENTER_Y, 0);
  }
  ~BarNode() override { gtk_widget_unparent(button_); }

  void update() override {
    ViewNode::update();
    const auto& button = bar_.leftButton();
    gtk_widget_set_visible(button_, button.has_value());
    if (!button) return;
    const auto tint = button->tint.value_or(ui::Color::black());
    gchar* markup = g_markup_printf_escaped("<span color=\"#%02x%02x%02x\">%s</span>",
                                            static_cast<unsigned>(tint.red * 255),
                                            static_cast<unsigned>(tint.green * 255),
                                            static_cast<unsigned>(tint.blue * 255), button->title.c_str());
    auto* label = gtk_label_new(nullptr);
    gtk_label_set_markup(GTK_LABEL(label), markup);
    gtk_button_set_child(GTK_BUTTON(button_), label);
    g_free(markup);
  }
  void paint(GtkSnapshot* snapshot, double width, double height) override {
    const auto& look = bar_.standardAppearance.get();
    const bool dark = look && look->opaqueDefaultBackground && isDark(widget());
    const auto bounds = GRAPHENE_RECT_INIT(0, 0, static_cast<float>(width), static_cast<float>(height));
    if (look && look->opaqueDefaultBackground) {
      const float grey = dark ? 48 / 255.0F : 247 / 255.0F;
      const GdkRGBA background{grey, grey, grey, 1};
      gtk_snapshot_append_color(snapshot, &background, &bounds);
    }
    ViewNode::paint(snapshot, width, height);
    if (!bar_.title.get() || width <= 2 * endRoom) return;
    const graphene_point_t origin{static_cast<float>(endRoom), 0};
    gtk_snapshot_save(snapshot);
    gtk_snapshot_translate(snapshot, &origin);
    paintText(snapshot, widget(),
              {*bar_.title.get(), look ? look->titleFont : ui::Font{},
               dark ? ui::Color::white() : ui::Color::black(), ui::TextAlignment::center, 1},
              width - 2 * endRoom, height);
    gtk_snapshot_restore(snapshot);
  }

 private:
  static constexpr int sideRoom = 8;
  static constexpr double endRoom = 76;  ///< for the button, and as much on the other side

  void pin(GtkConstraintLayout* layout, GtkConstraintAttribute attribute, double constant) {
    gtk_constraint_layout_add_constraint(
        layout, gtk_constraint_new(button_, attribute, GTK_CONSTRAINT_RELATION_EQ, nullptr, attribute, 1,
                                   constant, GTK_CONSTRAINT_STRENGTH_REQUIRED));
  }

  ui::NavigationBar& bar_;
  GtkWidget* button_;
};

class NodeMaker final : public ui::ViewVisitor {
 public:
  void visit(ui::View& view) override { make<ViewNode>(view); }
  void visit(ui::Label& label) override { make<LabelNode>(label); }
  void visit(ui::TextView& view) override { make<TextNode>(view); }
  void visit(ui::ImageView& view) override { make<ImageNode>(view); }
  void visit(ui::ActivityIndicator& view) override { make<IndicatorNode>(view); }
  void visit(ui::Button& button) override { make<ButtonNode>(button); }
  void visit(ui::NavigationBar& bar) override { make<BarNode>(bar); }
  void visit(ui::WebView& view) override {
    if (auto* shown = dynamic_cast<WidgetWebView*>(&view)) {
      node = std::make_unique<WrappingNode>(view, shown->widget());
    } else {
      make<ViewNode>(static_cast<ui::View&>(view));
    }
  }
  std::unique_ptr<ViewNode> node;

 private:
  template <class Node, class View>
  void make(View& view) {
    node = std::make_unique<Node>(view);
  }
};

}  // namespace

std::unique_ptr<ViewNode> makeViewNode(ui::View& view) {
  NodeMaker maker;
  view.accept(maker);
  maker.node->update();
  return std::move(maker.node);
}

}  // namespace VorselKelp::gtk
