#pragma once

namespace VorselKelp::ui {

class ActivityIndicator;
class Button;
class ImageView;
class Label;
class NavigationBar;
class TextView;
class View;
class WebView;

/// Does for each kind of view what that kind needs: how a platform tells them apart.
class ViewVisitor {
 public:
  virtual ~ViewVisitor() = default;
  virtual void visit(View& view) = 0;
  virtual void visit(Label& label) = 0;
  virtual void visit(TextView& textView) = 0;
  virtual void visit(ImageView& imageView) = 0;
  virtual void visit(ActivityIndicator& indicator) = 0;
  virtual void visit(Button& button) = 0;
  virtual void visit(NavigationBar& bar) = 0;
  virtual void visit(WebView& webView) = 0;
};

}  // namespace VorselKelp::ui
