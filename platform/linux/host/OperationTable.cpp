#include "VorselKelpLinux/OperationTable.h"

#include <algorithm>

namespace VorselKelp::linux_platform {
namespace {

bool isHexadecimal(std::string_view text) {
  return text.size() % 2 == 0 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

}  // namespace

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
    if (operation.kinds[i] == 'j') continue;
    const auto* text = arguments[i].as<std::string>();
    if (text == nullptr) return Error{name + ": argument " + std::to_string(i + 1) + " must be a text"};
    if (operation.kinds[i] == 'x' && !isHexadecimal(*text)) {
      return Error{name + ": argument " + std::to_string(i + 1) + " must be bytes as hexadecimal digits"};
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
