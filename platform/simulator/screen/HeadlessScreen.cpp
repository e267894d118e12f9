#include "VorselKelpSimulator/ProcessScreen.h"

namespace VorselKelp::simulator {
namespace {

class HeadlessScreen final : public ProcessScreen {
 public:
  std::shared_ptr<posix::LoopWaiter> makeWaiter() override { return nullptr; }
  Result<Services> open(Setting setting) override {
    Services services;
    services.screen = makeScreen(setting.manifest);
    services.viewPresenter = makeHeadlessPresenter(setting.root, setting.screenChanged);
    services.webViews = makeHeadlessWebViews(setting.loop, setting.urlSession, setting.promptAnswer);
    return services;
  }
  [[nodiscard]] bool visible() const override { return false; }
  bool drawn() override { return true; }
  [[nodiscard]] bool left() const override { return true; }
  Status writePicture(const std::string&) override { return Error{"Nothing is shown here: no picture"}; }
  void close() override {}
};

}  // namespace

std::shared_ptr<ProcessScreen> headlessScreen() {
  return std::make_shared<HeadlessScreen>();
}

}  // namespace VorselKelp::simulator
