#include "support/BenchmarkPlatform.h"

#include <cstdlib>
#include <filesystem>

#include "VorselKelp/VorselBuilder.h"
#include "VorselKelpPosix/DiskFileManager.h"
#include "VorselKelpPosix/SqliteUserDefaults.h"
#include "VorselKelpTesting/MemoryPlatform.h"
#include "core/CoreScope.h"

namespace VorselKelp::benchmarks {
namespace {

std::string makeFolder() {
  std::string path = (std::filesystem::temp_directory_path() / "vorsel-benchmark-XXXXXX").string();
  if (::mkdtemp(path.data()) == nullptr) std::abort();
  return path;
}

struct NoRequests final : platform::URLSession {
  void send(platform::URLRequest, Completion) override {}
};

struct SilentConsole final : platform::Console {
  void print(std::string_view) override {}
};

struct FixedCategories final : platform::NotificationCenter {
  explicit FixedCategories(std::vector<platform::NotificationCategory> fixed)
      : categories(std::move(fixed)) {}
  void requestAuthorization(unsigned,
                            platform::UniqueFunction<void(bool, std::optional<Error>)> answer) override {
    answer(true, std::nullopt);
  }
  void getNotificationSettings(
      platform::UniqueFunction<void(platform::NotificationSettings)> answer) override {
    answer({platform::AuthorizationStatus::authorized});
  }
  void getNotificationCategories(
      platform::UniqueFunction<void(std::vector<platform::NotificationCategory>)> answer) override {
    answer(categories);
  }
  void setNotificationCategories(std::vector<platform::NotificationCategory>) override {}
  void add(platform::NotificationRequest) override {}
  void removePendingNotificationRequests(const std::vector<std::string>&) override {}
  void removeDeliveredNotifications(const std::vector<std::string>&) override {}
  std::vector<platform::NotificationCategory> categories;
};

}  // namespace

TemporaryFolder::TemporaryFolder() : path(makeFolder()) {}
TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

void makeQuiet(platform::Platform& services, std::vector<platform::NotificationCategory> categories) {
  services.urlSession = std::make_shared<NoRequests>();
  services.console = std::make_shared<SilentConsole>();
  services.notificationCenter = std::make_shared<FixedCategories>(std::move(categories));
}

std::shared_ptr<platform::Platform> benchmarkPlatform(
    const std::string& folder, std::vector<platform::NotificationCategory> categories) {
  testing_platform::MemoryPlatform memory;
  auto services = std::make_shared<platform::Platform>(*memory.platform());
  posix::FileManagerOptions files;
  files.containersFolder = folder + "/groups";
  files.groups = {benchmarkGroup};
  files.temporaryFolder = folder + "/tmp";
  services->fileManager = posix::makeFileManager(files);
  posix::UserDefaultsOptions defaults;
  defaults.standardFile = folder + "/standard.sqlite";
  defaults.containerPath = [manager = services->fileManager](std::string_view group) {
    return manager->containerPath(group);
  };
  services->userDefaults = posix::makeUserDefaults(defaults);
  makeQuiet(*services, std::move(categories));
  return services;
}

std::shared_ptr<VorselConfig> configured(const std::shared_ptr<CoreContext>& core, const char* group) {
  const CoreScope scope(core);
  return VorselBuilder("k-123", group).push().build();
}

std::string textPush() {
  const auto tracker = [](const std::string& kind, int i) {
    return "\"https://track.example/" + kind + "/" + std::to_string(i) +
           "?campaign=2026-11-breaking&device=8f14e45f" + std::string(70, static_cast<char>('a' + i)) + "\"";
  };
  std::string push =
      R"({"aps":{"alert":{"title":"Storm warning for the coast","v":)" + tracker("view", 0) + R"(,"t":[)";
  for (int i = 0; i < 4; ++i) push += (i ? "," : "") + tracker("impression", i);
  push += R"(],"n":{"body":")";
  for (int i = 0; i < 6; ++i)
    push += "Gusts of up to 130 km/h are expected from tonight on; stay away from the shore. ";
  push += R"(","sound":"alarm","tid":"task-4711","tag":"weather","actions":[)"
          R"({"action":"read","title":"Read","url":"https://news.example/storm?b=${VA_BACID}"},)"
          R"({"action":"no","title":"No","url":"https://news.example/mute?b=${VA_BACID}"}],)"
          R"("data":{"url":"https://news.example/storm?button=${VA_BACID}","t":[)";
  for (int i = 0; i < 3; ++i) push += (i ? "," : "") + tracker("click", i);
  return push + R"(]}}},"mutable-content":1}})";
}

std::string quietPush(const std::string& image) {
  std::string text;
  for (int i = 0; i < 24; ++i)
    text += "Gusts of up to 130 km/h are expected from tonight on; stay away from the shore. ";
  return R"({"aps":{"alert":{"title":"Storm warning","n":{"body":")" + text + R"(",)" +
         (image.empty() ? "" : R"("image":")" + image + R"(",)") +
         R"("actions":[{"action":"read","title":"Read","url":"https://news.example/storm"}],)"
         R"("data":{"url":"https://news.example/storm"}}},"mutable-content":1}})";
}

}  // namespace VorselKelp::benchmarks
