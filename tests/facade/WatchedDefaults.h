#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "VorselKelp/platform/UserDefaults.h"

namespace BrellixPush {

/// A domain that counts what it is asked, and lets the test step in around a transaction.
class WatchedDomain final : public VorselKelp::platform::DefaultsDomain {
 public:
  using Value = VorselKelp::platform::DefaultsValue;
  using Path = VorselKelp::platform::EntryPath;
  using Kind = VorselKelp::platform::MapKind;

  explicit WatchedDomain(std::shared_ptr<DefaultsDomain> target) : target_(std::move(target)) {}

  std::optional<Value> object(std::string_view key) override {
    ++reads;
    return target_->object(key);
  }
  void setObject(std::string_view key, Value value) override {
    ++others;
    target_->setObject(key, std::move(value));
  }
  void removeObject(std::string_view key) override {
    ++others;
    target_->removeObject(key);
  }
  std::optional<Value> mapEntry(std::string_view key, Path path, Kind kind) override {
    ++reads;
    return target_->mapEntry(key, path, kind);
  }
  void setMapEntry(std::string_view key, Path path, Kind kind, Value value) override {
    ++others;
    target_->setMapEntry(key, path, kind, std::move(value));
  }
  void removeMapEntry(std::string_view key, Path path, Kind kind) override {
    ++others;
    target_->removeMapEntry(key, path, kind);
  }
  bool transact(VorselKelp::platform::FunctionRef<void()> work) override {
    ++others;
    if (const auto stepIn = std::exchange(beforeTransaction, nullptr)) stepIn();
    const bool committed = target_->transact(work);
    if (const auto stepIn = std::exchange(afterTransaction, nullptr)) stepIn();
    return committed;
  }
  void synchronize() override {
    ++others;
    target_->synchronize();
  }

  int reads = 0;
  int others = 0;
  std::function<void()> beforeTransaction;
  std::function<void()> afterTransaction;

 private:
  std::shared_ptr<DefaultsDomain> target_;
};

/// User defaults whose standard domain is watched.
class WatchedDefaults final : public VorselKelp::platform::UserDefaults {
 public:
  explicit WatchedDefaults(std::shared_ptr<UserDefaults> target)
      : watched(std::make_shared<WatchedDomain>(target->standard())), target_(std::move(target)) {}

  std::shared_ptr<VorselKelp::platform::DefaultsDomain> standard() override { return watched; }
  std::shared_ptr<VorselKelp::platform::DefaultsDomain> suite(std::string_view name) override {
    auto suite = target_->suite(name);
    return suite == target_->standard() ? watched : suite;
  }

  const std::shared_ptr<WatchedDomain> watched;

 private:
  std::shared_ptr<UserDefaults> target_;
};

}  // namespace BrellixPush
