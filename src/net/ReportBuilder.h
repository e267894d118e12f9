#pragma once

#include <memory>
#include <string>

#include "core/CoreContext.h"
#include "core/Device.h"
#include "net/ActivityRecords.h"

namespace VorselKelp {

/// Fills reports with what the device, the application and the store say at this moment. Any thread.
class ReportBuilder {
 public:
  explicit ReportBuilder(std::shared_ptr<CoreContext> context) : context_(std::move(context)) {}

  /// `code`, `e` and `msg` are left absent for the sender to fill.
  [[nodiscard]] ActivityBody activity(CS session) const;
  [[nodiscard]] PushBody push(CS session, std::string token) const;

 private:
  [[nodiscard]] std::string modelName() const;

  std::shared_ptr<CoreContext> context_;
  Device device_;
};

}  // namespace VorselKelp
