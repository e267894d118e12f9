#include <utility>

#include "FaultyServices.h"

namespace VorselKelp::testing_platform {
namespace {

class FaultyWriter final : public platform::FileWriter {
 public:
  FaultyWriter(std::unique_ptr<platform::FileWriter> inner, Plan plan)
      : inner_(std::move(inner)), plan_(std::move(plan)) {}
  ~FaultyWriter() override {
    // Nobody removes the passing file of a killed process.
    if (plan_->stopped()) plan_->keep(std::move(inner_));
  }
  FaultyWriter(const FaultyWriter&) = delete;
  FaultyWriter& operator=(const FaultyWriter&) = delete;

  Status append(std::string_view bytes) override {
    return refused(FaultPoint::fileWrite) ? Status(*failure_) : inner_->append(bytes);
  }
  Result<std::string> read(std::size_t offset, std::size_t limit) override {
    return refused(FaultPoint::fileRead) ? Result<std::string>(*failure_) : inner_->read(offset, limit);
  }
  Status commit(const std::string& path) override {
    return refused(FaultPoint::fileWrite) ? Status(*failure_) : inner_->commit(path);
  }

 private:
  bool refused(FaultPoint point) {
    if (!failure_ && plan_->next(point)) failure_ = plan_->error();
    return failure_.has_value();
  }

  std::shared_ptr<platform::FileWriter> inner_;
  const Plan plan_;
  std::optional<Error> failure_;
};

class FaultyFiles final : public platform::FileManager {
 public:
  FaultyFiles(std::shared_ptr<platform::FileManager> inner, Plan plan)
      : inner_(std::move(inner)), plan_(std::move(plan)) {}

  std::optional<std::string> containerPath(std::string_view group) override {
    return inner_->containerPath(group);
  }
  std::string temporaryDirectory() override { return inner_->temporaryDirectory(); }
  bool fileExists(const std::string& path) override { return inner_->fileExists(path); }

  Status writeFile(const std::string& path, std::string_view bytes) override {
    return plan_->next(FaultPoint::fileWrite) ? Status(plan_->error()) : inner_->writeFile(path, bytes);
  }
  Result<std::unique_ptr<platform::FileWriter>> makeWriter(const std::string& folder) override {
    if (plan_->next(FaultPoint::fileWrite)) return plan_->error();
    auto made = inner_->makeWriter(folder);
    if (!made) return made.error();
    return std::unique_ptr<platform::FileWriter>(std::make_unique<FaultyWriter>(*std::move(made), plan_));
  }
  Result<std::string> readFile(const std::string& path, std::size_t limit) override {
    return plan_->next(FaultPoint::fileRead) ? Result<std::string>(plan_->error())
                                             : inner_->readFile(path, limit);
  }
  Status removeItem(const std::string& path) override {
    return plan_->next(FaultPoint::fileWrite) ? Status(plan_->error()) : inner_->removeItem(path);
  }
  std::unique_ptr<platform::FileLock> lock(const std::string& path) override {
    return plan_->next(FaultPoint::fileLock) ? nullptr : inner_->lock(path);
  }

 private:
  const std::shared_ptr<platform::FileManager> inner_;
  const Plan plan_;
};

}  // namespace

std::shared_ptr<platform::FileManager> faultyFiles(std::shared_ptr<platform::FileManager> inner, Plan plan) {
  return std::make_shared<FaultyFiles>(std::move(inner), std::move(plan));
}

}  // namespace VorselKelp::testing_platform
