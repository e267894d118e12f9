#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelpPosix/SerialQueue.h"
#include "gateway/Notification.h"
#include "phone/Target.h"

namespace gateway {

class DeskApplication;

/// Applications of simulated devices on this machine. A notification is kept in its device's home, then
/// answered, then delivered from there: whatever ends this process loses none. What lies there undelivered is
/// delivered from the start on, for each application in order. A token may appear, change or go at any time.
class DeskDevices final : public NextHop {
 public:
  explicit DeskDevices(const std::vector<phone::Target>& targets);
  /// Answers what waits for an answer, and ends a delivery under way; its notification stays in the home.
  ~DeskDevices() override;
  DeskDevices(const DeskDevices&) = delete;
  DeskDevices& operator=(const DeskDevices&) = delete;

  /// Tokens of 32 bytes.
  [[nodiscard]] bool takes(std::string_view device) const override;
  void deliver(Notification notification, Answered answered) override;

 private:
  Answer take(const Notification& notification);
  bool ask(std::size_t number, const Notification& notification, Answer& answer);

  std::vector<std::unique_ptr<DeskApplication>> applications_;
  /// Which application had a token when it was asked last; looked up there first. The queue's alone.
  std::map<std::string, std::size_t, std::less<>> remembered_;
  VorselKelp::posix::SerialQueue intake_;
};

}  // namespace gateway
