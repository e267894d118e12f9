#include <utility>

#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpSimulator/HeadlessScreen.h"

namespace VorselKelp::simulator {
namespace {

class HeadlessPresenter final : public platform::ViewPresenter {
 public:
  HeadlessPresenter(const std::shared_ptr<ui::ViewController>& root, ScreenListener changed)
      : root_(root), changed_(std::move(changed)) {}

  std::shared_ptr<ui::ViewController> rootViewController() override { return root_.lock(); }

  void present(const std::shared_ptr<ui::ViewController>& controller,
               const std::shared_ptr<ui::ViewController>& from, bool animated) override {
    if (!from || !from->link(controller)) {
      posix::standardErrorLines()("A screen can't be presented there");
      return;
    }
    const auto shown = controller;
    const auto view = shown->view();
    shown->viewWillAppear(animated);
    if (view) view->performLayout();
    shown->viewDidAppear(animated);
    changed_(true);
  }

  void dismiss(const std::shared_ptr<ui::ViewController>& controller, bool animated) override {
    if (!controller || !controller->presentingViewController()) return;
    const auto going = controller;
    if (const auto above = going->presentedViewController()) dismiss(above, animated);
    going->viewWillDisappear(animated);
    going->unlink();
    going->viewDidDisappear(animated);
    changed_(false);
  }

  void setNeedsStatusBarAppearanceUpdate(const std::shared_ptr<ui::ViewController>&) override {}

 private:
  const std::weak_ptr<ui::ViewController> root_;  // what it shows may hold the core, which holds this
  const ScreenListener changed_;
};

}  // namespace

std::shared_ptr<platform::ViewPresenter> makeHeadlessPresenter(
    const std::shared_ptr<ui::ViewController>& root, ScreenListener changed) {
  return std::make_shared<HeadlessPresenter>(root, std::move(changed));
}

}  // namespace VorselKelp::simulator
