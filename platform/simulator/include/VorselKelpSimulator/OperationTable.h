#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelp/Result.h"
#include "VorselKelpSimulator/ApplicationHost.h"

namespace VorselKelp::simulator {

/// Operations that can be called by name, with JSON arguments: the hand by which brellixctl reaches into a
/// running application.
class VORSELKELP_API OperationTable {
 public:
  /// What an operation gives back when it is called: its value (null when it has none). An operation with a
  /// completion hands each of the completion's calls to `completed` instead, possibly later and on any
  /// thread.
  struct Call {
    const JSONAny::List& arguments;
    std::function<void(JSONAny::List)> completed;
    ApplicationProcess& process;

    /// Arguments have been checked against the operation's kinds before it is called.
    [[nodiscard]] const std::string& text(std::size_t i) const { return *arguments[i].as<std::string>(); }
  };

  struct Operation {
    std::string_view name;
    /// One letter an argument: 't' text, 'x' text of two hexadecimal digits a byte, 'i' integer, 'o' JSON
    /// object, 'j' any JSON.
    std::string_view kinds;
    bool hasCompletion = false;
    JSONAny (*call)(const Call& call);
  };

  OperationTable() = default;
  explicit OperationTable(std::vector<Operation> operations) : operations_(std::move(operations)) {}

  /// An application's own beside those that are there.
  void add(const std::vector<Operation>& operations) {
    operations_.insert(operations_.end(), operations.begin(), operations.end());
  }

  [[nodiscard]] const Operation* find(std::string_view name) const;
  /// An error when `operation` cannot be called with these arguments.
  static Status check(const Operation& operation, const JSONAny::List& arguments);
  /// The names, for a person.
  [[nodiscard]] std::string names() const;

 private:
  std::vector<Operation> operations_;
};

/// The library's public static operations.
VORSELKELP_API OperationTable publicOperations();

}  // namespace VorselKelp::simulator
