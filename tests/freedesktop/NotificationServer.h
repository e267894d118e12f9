#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "freedesktop/BusTest.h"

namespace VorselKelp::freedesktop {

/// A desktop that shows notifications, and whose user does what the test says.
class NotificationServer {
 public:
  struct Shown {
    std::uint32_t number;
    std::uint32_t replaced;
    std::string title;
    std::string body;
    std::vector<std::string> actions;
  };

  explicit NotificationServer(const std::string& address);
  ~NotificationServer();

  /// Answers Notify calls that were held back.
  void release();
  void invoke(std::uint32_t number, const std::string& key);
  void close(std::uint32_t number, std::uint32_t reason);
  void emit(const char* signal, GVariant* arguments);
  /// Has everything shown that was on its way.
  void catchUp() { service_.catchUp(); }

  std::vector<std::string> abilities{"actions", "body", "body-markup"};
  bool holds = false;         ///< Notify is not answered until release()
  bool answersWrong = false;  ///< Notify is answered with a text
  std::string refusal;        ///< the name of the error that Notify is answered with; empty: none
  std::vector<Shown> shown;
  std::vector<std::uint32_t> closed;

 private:
  void called(const std::string& method, GVariant* arguments, GDBusMethodInvocation* invocation);
  void notify(GVariant* arguments, GDBusMethodInvocation* invocation);

  BusService service_;
  std::vector<std::pair<std::uint32_t, GDBusMethodInvocation*>> held_;
  std::uint32_t last_ = 0;
};

}  // namespace VorselKelp::freedesktop
