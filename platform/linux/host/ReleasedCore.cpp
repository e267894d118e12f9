#include "host/ReleasedCore.h"

#include "VorselKelp/VorselKellp.h"

namespace VorselKelp::linux_platform {
namespace {

class NoDomain final : public platform::DefaultsDomain {
 public:
  std::optional<platform::DefaultsValue> object(std::string_view) override { return std::nullopt; }
  void setObject(std::string_view, platform::DefaultsValue) override {}
  void removeObject(std::string_view) override {}
  std::optional<platform::DefaultsValue> mapEntry(std::string_view, platform::EntryPath,
                                                  platform::MapKind) override {
    return std::nullopt;
  }
  void setMapEntry(std::string_view, platform::EntryPath, platform::MapKind,
                   platform::DefaultsValue) override {}
  void removeMapEntry(std::string_view, platform::EntryPath, platform::MapKind) override {}
  void transact(platform::FunctionRef<void()> work) override { work(); }
  void synchronize() override {}
};

class NoUserDefaults final : public platform::UserDefaults {
 public:
  std::shared_ptr<platform::DefaultsDomain> standard() override { return domain_; }
  std::shared_ptr<platform::DefaultsDomain> suite(std::string_view) override { return nullptr; }

 private:
  std::shared_ptr<platform::DefaultsDomain> domain_ = std::make_shared<NoDomain>();
};

}  // namespace

void releaseCore(std::shared_ptr<platform::Platform> platform) {
  auto rest = std::make_shared<platform::Platform>(*platform);
  rest->userDefaults = std::make_shared<NoUserDefaults>();
  VorselKellp::install(std::move(rest));
}

}  // namespace VorselKelp::linux_platform
