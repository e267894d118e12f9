#include "VorselKelpPosix/CurlURLSession.h"

#include <utility>

#include "VorselKelpPosix/SerialQueue.h"
#include "net/TransferThread.h"

namespace VorselKelp::posix {
namespace {

class CurlURLSession final : public platform::URLSession {
 public:
  explicit CurlURLSession(URLSessionOptions options) : transfers_(std::move(options), delegate_) {}

  ~CurlURLSession() override {
    transfers_.stop();
    delegate_.close();
  }

  void send(platform::URLRequest request, Completion completion) override {
    transfers_.add(std::move(request), std::move(completion));
  }

 private:
  SerialQueue delegate_;
  TransferThread transfers_;
};

}  // namespace

std::shared_ptr<platform::URLSession> makeURLSession(URLSessionOptions options) {
  return std::make_shared<CurlURLSession>(std::move(options));
}

}  // namespace VorselKelp::posix
