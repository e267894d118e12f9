#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelpSystem/NotificationStore.h"
#include "collection_server/CollectionServer.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::testing_support {

/// A program that was started; it is ended with this object.
class Program {
 public:
  explicit Program(const std::string& command);
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program();

  /// False once it has ended by itself.
  bool running();

 private:
  int id_ = 0;
};

/// What a command prints, without the line's end.
std::string output(const std::string& command);

/// How many pixels of the display have a colour, 0xrrggbb.
int pixels(unsigned long color);

/// A desk for real programs: folders of its user's, and servers. Display and session bus are those that the
/// test runs on.
class Desk : public testing::Test {
 protected:
  static constexpr const char* reader = "com.example.reader";
  static constexpr unsigned long sun = 0xffd65a;  ///< in every picture of the server's

  Desk();

  /// Other servers, for what is described from now on.
  void serve(const std::string& configuration, std::map<std::string, int> statuses = {});
  /// Writes an application's description, and answers the file.
  [[nodiscard]] std::string describe(const std::string& identifier) const;
  [[nodiscard]] std::unique_ptr<system::NotificationStore> storeOf(const std::string& identifier) const;
  /// All that the program writes goes to a file of this name.
  [[nodiscard]] std::unique_ptr<Program> start(const std::string& command, const std::string& lines) const;
  [[nodiscard]] std::string written(const std::string& lines) const;
  /// Waits until the Reader has reported its start.
  void startReader();

  /// Lets the main loop work until `done` answers true, asked ten times a second.
  static bool waitFor(const std::function<bool()>& done);
  /// How many requests had this in their path or body.
  int requests(std::string_view part);
  /// Has an application do one of its actions, as a launcher would.
  static void activate(const std::string& identifier, const std::string& action,
                       const std::string& parameter = "[]");
  static std::string window(const std::string& title);
  /// As its button in the title bar does.
  static void closeWindow(const std::string& title);
  /// A push with a picture, a button and an article, as the Reader's own service extension fits it out.
  [[nodiscard]] platform::NotificationRequest fittedOut(const std::string& identifier) const;
  /// A campaign of three pages that tell when they are seen.
  [[nodiscard]] platform::NotificationRequest campaign(const std::string& identifier) const;

  const TemporaryFolder folder_;
  std::mutex answers_;  ///< whoever holds it keeps the servers from answering
  std::unique_ptr<collection_server::CollectionServer> server_;
  std::unique_ptr<system::NotificationStore> store_;  ///< the Reader's
  std::unique_ptr<Program> reader_;

 private:
  std::mutex mutex_;
  std::vector<std::string> requests_;
};

}  // namespace VorselKelp::testing_support
