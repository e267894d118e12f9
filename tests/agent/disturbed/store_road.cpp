// store_road FOLDER LIVES: keeps notifications with pictures, buttons, responses, reminders and a badge below
// the folder, in so many lives of an application.

#include <cstdlib>

#include "VorselKelpPosix/DiskFileManager.h"
#include "VorselKelpSystem/NotificationStore.h"
#include "VorselKelpTesting/ManualClock.h"
#include "agent/disturbed/RoadPicture.h"

using namespace VorselKelp;

namespace {

class Road {
 public:
  explicit Road(std::string folder)
      : folder_(std::move(folder)), files_(posix::makeFileManager({folder_, {}, folder_ + "/passing"})) {}

  void live(int life) {
    system::NotificationStore store(folder_ + "/store", "app", clock_);
    store.setAuthorization(platform::AuthorizationStatus::authorized);
    // A long one that changes with each life has the file written anew now and then.
    store.changeCategories({"menu " + std::to_string(life - 2)},
                           {category("menu " + std::to_string(life), 5000)});
    remind(store);
    for (int push = 0; push < 6; ++push) deliver(store, std::to_string(push), ++number_);
    respond(store, "1");
    respond(store, "2");
    if (life % 2 == 1) (void)store.takeResponses();
    store.noteTapped("2");
    clock_->advance(90);
    (void)store.takeDue();
    store.removeDelivered({"3"});
    store.setBadge(life);
    if (life % 3 == 2) store.removePending({"reminder"});
  }

 private:
  static platform::NotificationCategory category(const std::string& identifier, std::size_t length) {
    return {identifier, {{"yes", std::string(length, 'y'), {}}, {"no", "No", {}}}, false};
  }

  platform::NotificationRequest request(const std::string& identifier, int number) {
    platform::NotificationRequest made;
    made.identifier = identifier;
    made.content.title = "title " + std::to_string(number);
    made.content.body = std::string(static_cast<std::size_t>(number) * 37 % 6000, 'b');
    if (number % 4 == 3) return made;
    // Where an extension puts it.
    const auto name = "picture-" + std::to_string(number) + ".png";
    const auto path = folder_ + "/passing/" + std::to_string(number) + "/" + name;
    (void)files_->writeFile(path, testing_support::roadPicture(name));
    made.content.attachments.push_back({"image", path});
    return made;
  }

  void deliver(system::NotificationStore& store, const std::string& identifier, int number) {
    auto made = request(identifier, number);
    made.content.badge = number;
    made.content.categoryIdentifier = "buttons " + std::to_string(number);
    store.changeCategories({}, {category(made.content.categoryIdentifier, 40)}, true);
    (void)store.deliver(std::move(made));
  }

  void remind(system::NotificationStore& store) {
    auto made = request("reminder", ++number_);
    made.trigger = {60, true};
    (void)store.schedule(std::move(made));
  }

  static void respond(system::NotificationStore& store, const std::string& identifier) {
    (void)store.keepResponse(identifier, "yes", "a text");
  }

  const std::string folder_;
  const std::shared_ptr<testing_platform::ManualClock> clock_ =
      std::make_shared<testing_platform::ManualClock>();
  const std::shared_ptr<platform::FileManager> files_;
  int number_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  Road road(argv[1]);
  for (int life = 0; life < std::atoi(argv[2]); ++life) road.live(life);
  return 0;
}
