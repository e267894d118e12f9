#include "VorselKelpTesting/MemoryPlatform.h"

#include <optional>
#include <utility>

namespace VorselKelp::testing_platform {

MemoryDevice::MemoryDevice()
    : clock(std::make_shared<ManualClock>()),
      groupStores(std::make_shared<MemoryGroupStores>()),
      files(std::make_shared<MemoryFiles>()),
      notificationCenter(std::make_shared<MemoryNotificationCenter>(clock, files)),
      hardware(std::make_shared<SettableDevice>()),
      screen(std::make_shared<SettableScreen>()) {}

void MemoryDevice::addGroup(std::string_view group) {
  groupStores->add(group);
  files->addGroup(group);
}

std::shared_ptr<MemoryDefaultsDomain> MemoryDevice::standardDomain(const std::string& bundleIdentifier) {
  const std::lock_guard lock(mutex_);
  auto& domain = standardDomains_[bundleIdentifier];
  if (!domain) domain = std::make_shared<MemoryDefaultsDomain>();
  return domain;
}

void MemoryDevice::advance(double seconds) {
  const double end = clock->uptime() + (seconds > 0 ? seconds : 0);
  for (;;) {
    double next = end;
    std::shared_ptr<ManualMainQueue> queue;
    for (const auto& candidate : queues()) {
      const auto due = candidate->nextDue();
      if (due && (queue ? *due < next : *due <= end)) {
        next = *due;
        queue = candidate;
      }
    }
    const auto notification = notificationCenter->nextDue();
    const bool deliver = notification && (queue ? *notification < next : *notification <= end);
    if (deliver) next = *notification;
    clock->advance(next - clock->uptime());
    if (deliver) {
      notificationCenter->deliverDue();
    } else if (!queue || !queue->runOne()) {
      return;
    }
  }
}

void MemoryDevice::enroll(const std::shared_ptr<ManualMainQueue>& queue) {
  const std::lock_guard lock(mutex_);
  std::erase_if(queues_, [](const auto& other) { return other.expired(); });
  queues_.push_back(queue);
}

std::vector<std::shared_ptr<ManualMainQueue>> MemoryDevice::queues() {
  const std::lock_guard lock(mutex_);
  std::vector<std::shared_ptr<ManualMainQueue>> living;
  for (const auto& weak : queues_) {
    if (auto queue = weak.lock()) living.push_back(std::move(queue));
  }
  return living;
}

MemoryPlatform::MemoryPlatform(std::shared_ptr<MemoryDevice> onDevice, ProcessKind kind,
                               const std::string& bundleIdentifier)
    : device(std::move(onDevice)),
      standardDomain(device->standardDomain(bundleIdentifier)),
      userDefaults(std::make_shared<MemoryUserDefaults>(standardDomain, device->groupStores)),
      fileManager(std::make_shared<MemoryFileManager>(device->files, "/tmp/" + bundleIdentifier)),
      urlSession(std::make_shared<MemoryURLSession>()),
      bundle(std::make_shared<MemoryBundle>()),
      application(std::make_shared<MemoryApplication>(kind)),
      mainQueue(std::make_shared<ManualMainQueue>(device->clock)),
      random(std::make_shared<DeterministicRandom>()),
      console(std::make_shared<RecordingConsole>()),
      browser(std::make_shared<RecordingBrowser>(application)),
      imageDecoder(std::make_shared<HeaderImageDecoder>()),
      location(std::make_shared<MemoryLocation>()),
      presenter(std::make_shared<RecordingPresenter>(application)),
      webViews(std::make_shared<RecordingWebViews>()),
      platform_(std::make_shared<platform::Platform>()) {
  device->enroll(mainQueue);
  bundle->setMain("CFBundleIdentifier", bundleIdentifier);
  bundle->setMain("CFBundleShortVersionString", "1.0");
  bundle->setLibrary("CFBundleShortVersionString", "2.0.0");
  *platform_ = platform::Platform{.endpoints = {},
                                  .userDefaults = userDefaults,
                                  .fileManager = fileManager,
                                  .urlSession = urlSession,
                                  .bundle = bundle,
                                  .notificationCenter = device->notificationCenter,
                                  .application = application,
                                  .mainQueue = mainQueue,
                                  .clock = device->clock,
                                  .random = random,
                                  .device = device->hardware,
                                  .screen = device->screen,
                                  .console = console,
                                  .imageDecoder = imageDecoder,
                                  .inAppBrowser = browser,
                                  .location = location,
                                  .viewPresenter = presenter,
                                  .webViews = webViews};
}

MemoryPlatform::~MemoryPlatform() {
  urlSession->cancelAll();
  mainQueue->drop();
}

void MemoryPlatform::settle() {
  while (mainQueue->runUntilIdle() + urlSession->answerByRules() > 0) {
  }
}

}  // namespace VorselKelp::testing_platform
