#include "VorselKelpSimulator/DeviceServices.h"

namespace VorselKelp::simulator {
namespace {

class RecordingBrowser final : public platform::InAppBrowser {
 public:
  explicit RecordingBrowser(std::function<void(const std::string&)> show) : show_(std::move(show)) {}
  void present(const std::string& url) override { show_(url); }

 private:
  std::function<void(const std::string&)> show_;
};

}  // namespace

std::shared_ptr<platform::InAppBrowser> makeRecordingBrowser(
    std::function<void(const std::string& url)> show) {
  return std::make_shared<RecordingBrowser>(std::move(show));
}

}  // namespace VorselKelp::simulator
