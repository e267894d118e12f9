#include "device/MovableClock.h"

#include "VorselKelpPosix/Services.h"

namespace VorselKelp::simulator {
namespace {

class MovableClock final : public platform::Clock {
 public:
  explicit MovableClock(std::function<double()> offset) : offset_(std::move(offset)) {}

  double now() override { return machine_->now() + offset_(); }
  std::shared_ptr<platform::Semaphore> makeSemaphore() override { return machine_->makeSemaphore(); }

 private:
  const std::shared_ptr<platform::Clock> machine_ = posix::makeClock();
  const std::function<double()> offset_;
};

}  // namespace

std::shared_ptr<platform::Clock> makeMovableClock(std::function<double()> offset) {
  return std::make_shared<MovableClock>(std::move(offset));
}

}  // namespace VorselKelp::simulator
