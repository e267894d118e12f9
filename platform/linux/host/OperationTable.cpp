#include "VorselKelpLinux/OperationTable.h"

#include <algorithm>

namespace VorselKelp::linux_platform {

const OperationTable::Operation* OperationTable::find(std::string_view name) const {
  const auto found = std::find_if(operations_.begin(), operations_.end(),
                                  [&](const Operation& operation) { return operation.name == name; });
  return found == operations_.end() ? nullptr : &*found;
}

Status OperationTable::check(const Operation& operation, const JSONAny::List& arguments) {
  const std::string name(operation.name);
  if (arguments.size() != operation.kinds.size()) {
    return Error{name + " takes " + std::to_string(operation.kinds.size()) + " arguments, not " +
                 std::to_string(arguments.size())};
  }
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (operation.kinds[i] == 't' && arguments[i].as<std::string>() == nullptr) {
      return Error{name + ": argument " + std::to_string(i + 1) + " must be a text"};
    }
  }
  return Done{};
}

std::string OperationTable::names() const {
  std::string names;
  for (const auto& operation : operations_) {
    if (!names.empty()) names += ", ";
    names += operation.name;
  }
  return names;
}

}  // namespace VorselKelp::linux_platform
