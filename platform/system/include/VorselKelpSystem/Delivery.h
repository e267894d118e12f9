#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/RemoteKind.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelp/platform/Notification.h"
#include "VorselKelp/platform/UniqueFunction.h"
#include "VorselKelpSystem/ChildProcess.h"

namespace VorselKelp::system {

/// The application's service extension as a program. It gets the payload on standard input, "--id" with the
/// notification's identifier and "--time-limit" with its seconds behind its arguments, and writes the content
/// that is to be shown to standard output, as the line {"content": {...}} in the form of encodeContent(),
/// with "userInfo" where it changed that. What else it writes there are events of its own.
struct ServiceProgram {
  std::string
      program;  ///< an absolute path; empty: there is no extension, and everything is shown as it came
  std::vector<std::string> arguments;
  std::vector<std::pair<std::string, std::string>> environment;  ///< in addition to this process's
  int channel = 1;        ///< the descriptor in place of standard output
  double timeLimit = 30;  ///< seconds; a program that is still there 5 seconds later is killed
  std::size_t outputLimit = std::size_t{16} << 20;  ///< bytes; a program that writes more is killed
};

/// A remote notification as it arrived.
struct Push {
  std::string identifier;
  std::string payload;  ///< a JSON object
  std::string
      collapseKey;  ///< pushes with the same one are answered in the order in which they came; empty: none
};

/// What became of it.
struct PushResult {
  RemoteKind kind = RemoteKind::asItCame;
  /// What is to be shown: the extension's content, or the unchanged one when it gave none in time. Of a
  /// silent push nothing but the user information means anything.
  platform::NotificationRequest request;
};

/// How the extension did; all is empty where none was wanted.
struct ExtensionReport {
  /// Why it could not be started; its code is the system's.
  std::optional<Error> notStarted;
  ChildOutcome outcome;
};

struct PushAnswers {
  /// Once for each push, as soon as it is known what is to be shown; an error when the payload is no JSON
  /// object.
  platform::UniqueFunction<void(Result<PushResult>)> result;
  /// Once, behind the result, when the extension's process has ended; at once where none ran. May be empty.
  platform::UniqueFunction<void(ExtensionReport)> ended;
};

/// Takes pushes through the application's service extension: at most four processes at once.
///
/// Destroying it, on the main thread, kills those that run; after that nothing is answered any more.
class Delivery {
 public:
  virtual ~Delivery() = default;
  /// Any thread; returns at once. The answers come on the main thread.
  virtual void deliver(Push push, PushAnswers answers) = 0;
};

VORSELKELP_API std::shared_ptr<Delivery> makeDelivery(ServiceProgram program,
                                                      std::shared_ptr<platform::MainQueue> mainQueue);

}  // namespace VorselKelp::system
