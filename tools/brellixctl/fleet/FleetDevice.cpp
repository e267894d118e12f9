#include "brellixctl/fleet/FleetDevice.h"

#include <array>
#include <cstdint>
#include <utility>

#include "VorselKelp/VorselBuilder.h"
#include "core/CoreScope.h"
#include "kellp/Kellp.h"
#include "push/AdministrativePush.h"

namespace brellixctl {

using VorselKelp::Kellp;
using VorselKelp::VorselBuilder;
namespace platform = VorselKelp::platform;
namespace testing_platform = VorselKelp::testing_platform;

namespace {

constexpr const char* group = "group.fleet";

constexpr std::array models{"iPhone13,2", "iPhone14,5", "iPhone12,8", "iPhone11,8", "iPad6,12"};
constexpr std::array languages{"en", "de", "fr", "ja", "ko", "hi", "ar"};

std::shared_ptr<testing_platform::MemoryDevice> makeDevice(std::size_t number) {
  auto device = std::make_shared<testing_platform::MemoryDevice>();
  auto values = device->hardware->values();
  values.machineIdentifier = models[number % models.size()];
  values.languageCode = languages[number % languages.size()];
  device->hardware->set(std::move(values));
  device->addGroup(group);
  device->notificationCenter->setAuthorizationStatus(platform::AuthorizationStatus::authorized);
  return device;
}

std::string makeToken(platform::Random& random) {
  std::string token(32, '\0');
  for (auto& byte : token) byte = static_cast<char>(random.below(256));
  return token;
}

}  // namespace

FleetDevice::FleetDevice(const FleetServices& shared, std::size_t number)
    : shared_(shared),
      token_(makeToken(*shared.random)),
      device_(makeDevice(number)),
      process_(device_),
      application_(std::make_shared<Kellp>(adapt(process_))) {}

FleetDevice::~FleetDevice() = default;

std::shared_ptr<platform::Platform> FleetDevice::adapt(testing_platform::MemoryPlatform& process) const {
  auto services = process.platform();
  services->endpoints = shared_.endpoints;
  services->urlSession = shared_.session;
  services->mainQueue = shared_.mainQueue;
  services->clock = shared_.clock;
  services->random = shared_.random;
  services->console = shared_.console;
  return services;
}

void FleetDevice::launch() {
  {
    const VorselKelp::CoreScope scope(application_->context);
    application_->initialize(VorselBuilder(shared_.apiKey, group).push().build());
  }
  application_->tokens->registerToken({reinterpret_cast<const std::uint8_t*>(token_.data()), token_.size()});
}

void FleetDevice::push(const platform::UserInfo& payload, const std::string& identifier, bool opens,
                       std::function<void()> done, std::shared_ptr<platform::URLSession> session) {
  const auto process = std::make_shared<testing_platform::MemoryPlatform>(
      device_, testing_platform::ProcessKind::extension, "com.example.app.service");
  auto services = adapt(*process);
  if (session) services->urlSession = std::move(session);
  const auto extension = std::make_shared<Kellp>(std::move(services));
  extension->context->state.setAppGroupSetting(group);
  platform::NotificationRequest request;
  request.identifier = identifier;
  request.content.userInfo = payload;
  // The extension lives until it has answered, which it does on the main queue.
  struct Answer {
    platform::NotificationRequest request;
    std::shared_ptr<testing_platform::MemoryPlatform> process;
    std::shared_ptr<Kellp> extension;
    std::function<void()> done;
  };
  const auto answer = std::make_shared<Answer>(Answer{request, process, extension, std::move(done)});
  extension->serviceExtension->didReceive(request,
                                          std::make_shared<platform::NotificationContent>(request.content),
                                          [this, opens, answer](const auto& content) {
                                            if (content) answer->request.content = *content;
                                            shared_.mainQueue->async([this, opens, answer] {
                                              show(std::move(answer->request), opens);
                                              answer->done();
                                            });
                                          });
}

void FleetDevice::handOver(const platform::UserInfo& payload) {
  VorselKelp::readAdministrativePush(*application_->context, payload, [](const auto&, const auto&) {});
}

void FleetDevice::show(platform::NotificationRequest request, bool opens) {
  const auto identifier = request.identifier;
  device_->notificationCenter->deliver(request);
  if (opens) {
    application_->openHandling->pushTrackOpen(
        true, {std::move(request), std::string(platform::defaultActionIdentifier)}, [](const auto&) {});
  }
  device_->notificationCenter->removeDeliveredNotifications({identifier});
}

}  // namespace brellixctl
