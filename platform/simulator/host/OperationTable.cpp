#include "VorselKelpSimulator/OperationTable.h"

#include <algorithm>

namespace VorselKelp::simulator {
namespace {

bool isHexadecimal(std::string_view text) {
  return text.size() % 2 == 0 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

/// What an argument of this kind must be, when it is not; null when it is.
const char* missed(char kind, const JSONAny& argument) {
  if (kind == 'o') return argument.as<JSONAny::Dictionary>() == nullptr ? "a JSON object" : nullptr;
  if (kind == 'i') return argument.as<std::int64_t>() == nullptr ? "an integer" : nullptr;
  if (kind == 'j') return nullptr;
  const auto* text = argument.as<std::string>();
  if (text == nullptr) return "a text";
  return kind == 'x' && !isHexadecimal(*text) ? "bytes as hexadecimal digits" : nullptr;
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
    if (const auto* wanted = missed(operation.kinds[i], arguments[i])) {
      return Error{name + ": argument " + std::to_string(i + 1) + " must be " + wanted};
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

}  // namespace VorselKelp::simulator
