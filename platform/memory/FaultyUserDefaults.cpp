#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "FaultyServices.h"

namespace VorselKelp::testing_platform {
namespace {

using platform::DefaultsDomain;
using platform::DefaultsValue;
using platform::EntryPath;
using platform::MapKind;

class FaultyDomain final : public DefaultsDomain {
 public:
  FaultyDomain(std::shared_ptr<DefaultsDomain> inner, Plan plan)
      : inner_(std::move(inner)), plan_(std::move(plan)) {}

  std::optional<DefaultsValue> object(std::string_view key) override { return inner_->object(key); }
  std::optional<DefaultsValue> mapEntry(std::string_view key, EntryPath path, MapKind kind) override {
    return inner_->mapEntry(key, path, kind);
  }

  void setObject(std::string_view key, DefaultsValue value) override {
    write(key, [&] { inner_->setObject(key, std::move(value)); });
  }
  void removeObject(std::string_view key) override {
    write(key, [&] { inner_->removeObject(key); });
  }
  void setMapEntry(std::string_view key, EntryPath path, MapKind kind, DefaultsValue value) override {
    write(key, [&] { inner_->setMapEntry(key, path, kind, std::move(value)); });
  }
  void removeMapEntry(std::string_view key, EntryPath path, MapKind kind) override {
    write(key, [&] { inner_->removeMapEntry(key, path, kind); });
  }

  bool transact(platform::FunctionRef<void()> work) override {
    const std::lock_guard lock(mutex_);
    bool failed = false;
    const bool committed = inner_->transact([&] {
      if (depth_++ == 0) failed_ = plan_->next(FaultPoint::storeBegin).has_value();
      work();
      failed = failed_;
      if (--depth_ > 0) return;
      if (plan_->next(FaultPoint::storeCommit)) failed = true;
      if (failed) undo();
      failed_ = false;
      before_.clear();
    });
    return committed && !failed;
  }

  void synchronize() override {
    if (!plan_->stopped()) inner_->synchronize();
  }

 private:
  template <class Change>
  void write(std::string_view key, Change change) {
    const std::lock_guard lock(mutex_);
    if (plan_->next(FaultPoint::storeWrite)) {
      failed_ = depth_ > 0;
      return;
    }
    if (failed_) return;
    if (depth_ > 0 && !before_.contains(key)) before_.emplace(key, inner_->object(key));
    change();
  }

  /// The inner domain takes part in the transaction, so that nobody sees what is taken back.
  void undo() {
    for (auto& [key, value] : before_) {
      if (value) {
        inner_->setObject(key, std::move(*value));
      } else {
        inner_->removeObject(key);
      }
    }
  }

  const std::shared_ptr<DefaultsDomain> inner_;
  const Plan plan_;
  std::recursive_mutex mutex_;
  int depth_ = 0;
  bool failed_ = false;
  std::map<std::string, std::optional<DefaultsValue>, std::less<>> before_;  ///< what the transaction changed
};

class FaultyDefaults final : public platform::UserDefaults {
 public:
  FaultyDefaults(std::shared_ptr<platform::UserDefaults> inner, Plan plan)
      : inner_(std::move(inner)), plan_(std::move(plan)) {}

  std::shared_ptr<DefaultsDomain> standard() override { return wrapped(inner_->standard()); }
  std::shared_ptr<DefaultsDomain> suite(std::string_view name) override {
    return plan_->next(FaultPoint::storeOpen) ? nullptr : wrapped(inner_->suite(name));
  }

 private:
  /// One object for each inner one: some of them are the same object.
  std::shared_ptr<DefaultsDomain> wrapped(std::shared_ptr<DefaultsDomain> inner) {
    if (!inner) return nullptr;
    const std::lock_guard lock(mutex_);
    auto& known = domains_[inner.get()];
    if (!known) known = std::make_shared<FaultyDomain>(std::move(inner), plan_);
    return known;
  }

  const std::shared_ptr<platform::UserDefaults> inner_;
  const Plan plan_;
  std::mutex mutex_;
  std::map<DefaultsDomain*, std::shared_ptr<FaultyDomain>> domains_;
};

}  // namespace

std::shared_ptr<platform::UserDefaults> faultyDefaults(std::shared_ptr<platform::UserDefaults> inner,
                                                       Plan plan) {
  return std::make_shared<FaultyDefaults>(std::move(inner), std::move(plan));
}

}  // namespace VorselKelp::testing_platform
