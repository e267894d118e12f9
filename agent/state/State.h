#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FileManager.h"
#include "VorselKelp/platform/FunctionRef.h"
#include "VorselKelpPosix/Statement.h"
#include "VorselKelpWebPush/ReceiverKeys.h"

namespace VorselKelp::agent {

/// A message as it came from the distributor.
struct Message {
  std::string identifier;  ///< names it among all that come
  std::string bytes;
};

/// What the agent keeps from one life to the next, in a folder of its own that nobody else may read: the
/// registration, the keys, the messages that were acknowledged and not yet shown, and which came lately. One
/// agent at a time uses it: the lock that it holds ends with the object.
///
/// Any thread. Whatever answers without an error has been written; a message that keep() took survives a
/// power cut as well.
class State {
 public:
  /// Makes what is missing, and converts what an older version has written; what a newer one has is an error,
  /// and stays as it is. Waits until the agent that has the lock leaves.
  static Result<std::unique_ptr<State>> open(const std::string& folder);
  ~State();
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  Result<std::optional<std::string>> setting(const char* name);
  /// Several at once, in one step; those without a value are removed.
  struct Setting {
    const char* name;
    std::optional<std::string> value;
  };
  Status set(const std::vector<Setting>& settings);

  /// Newest first: the current pair, and those that were replaced less than seven days ago.
  Result<std::vector<webpush::ReceiverKeys>> keys(double now);
  /// The current pair from now on; what was replaced long ago goes.
  Status addKeys(const webpush::ReceiverKeys& keys, double now);

  /// Takes messages over, all or none. For each the serial number under which it waits; absent for one that
  /// came before. When there are too many waiting, that is an error.
  Result<std::vector<std::optional<std::int64_t>>> keep(const std::vector<Message>& messages, double now);
  /// The serial numbers of what waits, the oldest first.
  Result<std::vector<std::int64_t>> waiting();
  /// Absent when it waits no more.
  Result<std::optional<Message>> message(std::int64_t serial);

  /// What a desktop shows, and the number that it gave it.
  struct Shown {
    std::string identifier;
    std::uint32_t number = 0;  ///< 0: it has gone
    std::string desktop;       ///< whose number it is
  };
  /// What happened to messages and notifications, in one step: `shown` in its order.
  struct Changes {
    std::vector<std::int64_t> dropped;
    std::vector<Shown> shown;
  };
  Status apply(const Changes& changes);
  /// What this desktop shows; what others showed is forgotten.
  Result<std::vector<Shown>> shown(const std::string& desktop);

 private:
  struct Closer {
    void operator()(sqlite3* database) const;
  };
  using Database = std::unique_ptr<sqlite3, Closer>;

  State(std::unique_ptr<platform::FileLock> lock, Database database, std::string path);
  /// One statement that changes nothing.
  Status look(platform::FunctionRef<void(posix::Connection&)> work);
  Status transact(platform::FunctionRef<void(posix::Connection&)> work, bool durable = false);
  Status setDurable(bool durable);

  const std::unique_ptr<platform::FileLock> lock_;
  const std::string path_;
  std::mutex mutex_;
  const Database database_;
  posix::PreparedStatements prepared_;
  bool durable_ = true;  ///< how the database writes now; it is opened so
};

}  // namespace VorselKelp::agent
