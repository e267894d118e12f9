#include "stage/StagePresenter.h"

#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::gtk {

std::shared_ptr<ui::ViewController> StagePresenter::rootViewController() {
  const auto stage = stage_.lock();
  return stage ? stage->options().root.lock() : nullptr;
}

void StagePresenter::present(const std::shared_ptr<ui::ViewController>& controller,
                             const std::shared_ptr<ui::ViewController>& from, bool animated) {
  const auto stage = stage_.lock();
  auto* overlay = stage && from ? stage->overlayOf(*from) : nullptr;
  if (overlay == nullptr || !from->link(controller)) {
    posix::standardErrorLines()("A screen can't be presented there");
    return;
  }
  const auto shown = controller;
  (void)shown->view();
  shown->viewWillAppear(animated);
  const auto windowGone = [weak = stage_, closed = std::weak_ptr(shown)] {
    if (const auto gone = closed.lock()) StagePresenter(weak).dismiss(gone, false);
  };
  const auto escaped = [weak = std::weak_ptr(shown)] {
    const auto open = weak.lock();
    return open && open->accessibilityPerformEscape();
  };
  stage->push(overlay, shown, {windowGone, escaped});
  stage->flush();
  shown->viewDidAppear(animated);
  stage->options().screenChanged(true);
}

void StagePresenter::dismiss(const std::shared_ptr<ui::ViewController>& controller, bool animated) {
  if (!controller || !controller->presentingViewController()) return;
  const auto going = controller;
  if (const auto above = going->presentedViewController()) dismiss(above, animated);
  going->viewWillDisappear(animated);
  going->unlink();
  const auto stage = stage_.lock();
  if (stage) stage->remove(*going);
  going->viewDidDisappear(animated);
  if (stage) stage->options().screenChanged(false);
}

}  // namespace VorselKelp::gtk
