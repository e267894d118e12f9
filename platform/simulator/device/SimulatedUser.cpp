#include "VorselKelpSimulator/DeviceServices.h"

namespace VorselKelp::simulator {
namespace {

class User final : public SimulatedUser {
 public:
  explicit User(DialogAnswer answer) : choice_(answer) {}

  void ask(unsigned, Answer answer) override {
    if (dialog_) {
      const auto held = std::make_shared<Answer>(std::move(answer));
      return dialog_(choice_, [held](bool allowed) { (*held)(allowed); });
    }
    if (choice_ != DialogAnswer::none) answer(choice_ == DialogAnswer::allow);
  }
  void showDialogWith(PermissionDialog dialog) override { dialog_ = std::move(dialog); }

 private:
  const DialogAnswer choice_;
  PermissionDialog dialog_;
};

}  // namespace

std::shared_ptr<SimulatedUser> makeSimulatedUser(DialogAnswer answer) {
  return std::make_shared<User>(answer);
}

std::shared_ptr<system::NotificationCenter> makeNotificationCenter(
    std::shared_ptr<SimulatedDevice> device, std::shared_ptr<platform::MainQueue> mainQueue,
    std::shared_ptr<SimulatedUser> user) {
  system::CenterPorts ports;
  ports.store = std::move(device);
  ports.mainQueue = std::move(mainQueue);
  ports.asker = std::move(user);
  return system::makeNotificationCenter(std::move(ports));
}

}  // namespace VorselKelp::simulator
