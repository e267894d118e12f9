#include "screen/DesktopPresenter.h"

#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::desktop {

void DesktopPresenter::present(const std::shared_ptr<ui::ViewController>& controller,
                               const std::shared_ptr<ui::ViewController>& from, bool animated) {
  const auto window = window_.lock();
  if (!window || !from || !from->link(controller)) {
    posix::standardErrorLines()("A screen can't be presented there");
    return;
  }
  const auto shown = controller;
  (void)shown->view();
  shown->viewWillAppear(animated);
  window->push(shown);
  window->flush();
  shown->viewDidAppear(animated);
  changed_(true);
}

void DesktopPresenter::dismiss(const std::shared_ptr<ui::ViewController>& controller, bool animated) {
  if (!controller || !controller->presentingViewController()) return;
  const auto going = controller;
  if (const auto above = going->presentedViewController()) dismiss(above, animated);
  going->viewWillDisappear(animated);
  going->unlink();
  if (const auto window = window_.lock()) window->remove(*going);
  going->viewDidDisappear(animated);
  changed_(false);
}

}  // namespace VorselKelp::desktop
