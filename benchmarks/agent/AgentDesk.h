#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelpWebPush/ReceiverKeys.h"
#include "VorselKelpWebPush/Subscription.h"
#include "bus/Bus.h"
#include "distributor/Distributor.h"
#include "support/BenchmarkPlatform.h"

namespace VorselKelp::benchmarks {

/// A bus of its own with a distributor, somebody who shows notifications, the push agent of one application
/// and the bare program that does the least of it; both are started by whoever calls them.
class AgentDesk {
 public:
  /// Both leave when they have shown what came, or both stay, or the bare one does nothing but keep what
  /// comes.
  enum class Manner { leave, stay, keep };
  explicit AgentDesk(Manner manner);
  ~AgentDesk();
  AgentDesk(const AgentDesk&) = delete;
  AgentDesk& operator=(const AgentDesk&) = delete;

  /// One of the two, as the distributor sees it.
  struct Receiver {
    std::string name;  ///< on the bus
    std::string token;
    webpush::Subscription subscription;
  };
  [[nodiscard]] const Receiver& agent() const { return agent_; }
  [[nodiscard]] const Receiver& bare() const { return bare_; }

  /// The command that runs the bare extension once.
  [[nodiscard]] std::vector<std::string> bareExtension(int number) const;

  /// Sends a push of 2.2 KB and waits until its notification is shown; microseconds. What is shown expires.
  double push(const Receiver& receiver);
  /// Sends many at once and waits until `shown` notifications came; seconds.
  double burst(const Receiver& receiver, int count, int shown);
  void waitUntilGone(const Receiver& receiver);
  void kill(const Receiver& receiver);
  /// A number of KiB in a file of the receiver's process below /proc.
  long kilobytes(const Receiver& receiver, const char* file, const std::string& entry);

 private:
  void writeServices(Manner manner);
  void serve();
  void expireSoon(std::uint32_t number);
  void subscribe();
  void send(const Receiver& receiver);
  int processOf(const Receiver& receiver);
  void waitUntil(const std::function<bool()>& done);
  agent::VariantPtr ask(const char* name, const char* path, const char* interface, const char* method,
                        GVariant* arguments);

  TemporaryFolder folder_;
  freedesktop::ObjectPtr<GTestDBus> daemon_;
  std::unique_ptr<agent::Bus> bus_;
  std::unique_ptr<agent::Bus> desk_;
  std::unique_ptr<distributor::Distributor> distributor_;
  Receiver agent_;
  Receiver bare_;
  int shown_ = 0;
  int answered_ = 0;
  std::uint32_t number_ = 0;
  unsigned pulse_ = 0;
};

}  // namespace VorselKelp::benchmarks
