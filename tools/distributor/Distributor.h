#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "bus/Bus.h"

namespace distributor {

/// What a distributor does otherwise than the others.
struct Habits {
  int version = 2;              ///< of the interface that it offers
  bool endpointFirst = true;    ///< before the answer to the registration
  bool answers = true;          ///< registrations and removals
  std::string refusal;          ///< the reason with which it refuses registrations; empty: it takes them
  bool confirms = true;         ///< a removal, by a call
  bool namesRemoved = true;     ///< in that call, by its token
  std::string endpointsBefore;  ///< what an endpoint's path comes behind
};

/// A message's way: what the receiver answered, in the end.
using Delivered = std::function<void(const VorselKelp::Status&)>;

/// A distributor of push messages on the session's bus. It keeps what it was told in memory alone. Main
/// thread, whose default main context has to run.
class Distributor {
 public:
  struct Registration {
    std::string service;
    std::string token;
    std::string description;
    std::string vapidKey;
  };

  /// `name` is what follows "org.unifiedpush.Distributor.". The bus must outlive it.
  Distributor(VorselKelp::agent::Bus& bus, std::string name, Habits habits);

  /// From now on it is found; `owned` comes with whether the name was free.
  void begin(std::function<void(bool)> owned);
  /// Nobody finds it any more, and it forgets what it was told.
  void end();

  /// By the last part of their endpoints' path.
  [[nodiscard]] const std::map<std::string, Registration>& registrations() const { return registrations_; }
  /// Hands a message to the receiver behind an endpoint; an error at once when there is none.
  VorselKelp::Status send(const std::string& endpoint, const std::string& bytes, const std::string& id,
                          Delivered delivered = nullptr);
  /// As if somebody had registered; answers the endpoint.
  std::string adopt(const Registration& registration);
  /// Tells all receivers an endpoint: their own, or none.
  void tellEndpoints(bool none = false);
  /// Ends all registrations from here.
  void unregisterAll();

  Habits habits;
  std::size_t asked = 0;  ///< registrations and removals, answered or not

 private:
  void called(VorselKelp::agent::Call call, int version);
  void tellEndpoint(const std::string& endpoint, const Registration& registration, bool none);
  void tell(const Registration& registration, const char* method, GVariant* first, GVariant* second,
            Delivered delivered);

  VorselKelp::agent::Bus& bus_;
  const std::string name_;
  std::map<std::string, Registration> registrations_;
  std::size_t last_ = 0;
};

}  // namespace distributor
