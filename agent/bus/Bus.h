#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/UniqueFunction.h"
#include "glib/Pointers.h"

namespace VorselKelp::agent {

using freedesktop::ObjectPtr;
using freedesktop::VariantPtr;

/// A method call that somebody on the bus waits for.
struct Call {
  std::string sender;  ///< the caller's connection, ":1.7"
  std::string method;
  GVariant* arguments;  ///< as the interface says; the bus refuses others
  /// Exactly once, now or later, with what the method answers, or an error.
  platform::UniqueFunction<void(Result<VariantPtr>)> answer;
};

/// The agent's connection to the session's bus: what it serves, its name, and what it asks of others. When
/// the bus goes, the process stays. Main thread, whose default main context has to run.
class Bus {
 public:
  using Handler = std::function<void(Call)>;
  using Reply = platform::UniqueFunction<void(Result<VariantPtr>)>;

  /// `address` empty: the session's.
  static Result<std::unique_ptr<Bus>> connect(const std::string& address);
  ~Bus();
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;

  /// Serves an interface at a path, until the object goes. `xml` is introspection data with this interface
  /// alone; its properties are read by the methods "Get" and "GetAll" of the bus. To be called before
  /// requestName(): who activates the agent calls at once.
  Status serve(const char* path, const char* xml, Handler handler);
  void emitSignal(const char* path, const char* interface, const char* name, GVariant* arguments);

  /// `answer` comes with whether the name is ours alone.
  void requestName(const std::string& name, platform::UniqueFunction<void(Result<bool>)> answer);
  /// `answer` comes when nobody sends to the name here any more.
  void releaseName(const std::string& name, platform::UniqueFunction<void()> answer);

  /// Waits for the reply as long as it takes unless `seconds` says otherwise. An error that was sent by the
  /// other side begins with the error's name on the bus.
  void call(const char* service, const std::string& path, const char* interface, const char* method,
            GVariant* arguments, const char* answerType, Reply reply, int seconds = 0);

  /// The connection that owns the name now; empty: nobody does.
  void findOwner(const std::string& name, platform::UniqueFunction<void(std::string owner)> found);
  /// `heard` gets (name, owner or "") each time that the owner of the name changes, or of any name below it
  /// when `below`.
  void watchOwners(const char* name, bool below,
                   std::function<void(const std::string& name, const std::string& owner)> heard);
  void whenClosed(std::function<void()> closed);
  /// Everything that was sent has left the process.
  void flush(platform::UniqueFunction<void()> done);

  /// Names this bus among all that were ever started.
  [[nodiscard]] std::string guid() const;

 private:
  struct Served;

  explicit Bus(ObjectPtr<GDBusConnection> connection);

  const ObjectPtr<GDBusConnection> connection_;
  std::vector<unsigned> objects_;
  std::vector<unsigned> subscriptions_;
  std::function<void()> closed_;
};

}  // namespace VorselKelp::agent
