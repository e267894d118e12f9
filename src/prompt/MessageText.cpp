#include "prompt/MessageText.h"

#include <cstdint>

#include "base/Text.h"

namespace VorselKelp {
namespace {

/// Writes one value, with as many blanks as `indent` before each line but the first.
class Describer {
 public:
  Describer(std::string& out, std::size_t limit) : out_(out), limit_(limit) {}

  void describe(const JSONAny& any, std::size_t indent) {
    std::visit([&](const auto& value) { write(value, indent); }, any.value);
  }

 private:
  void write(const JSONNull&, std::size_t) { out_ += "<null>"; }
  void write(bool value, std::size_t) { out_ += value ? "1" : "0"; }
  void write(std::int64_t number, std::size_t) { out_ += std::to_string(number); }
  void write(double number, std::size_t) { out_ += decimalText(number); }
  void write(const std::string& text, std::size_t) { out_ += "\"" + text.substr(0, limit_) + "\""; }

  void write(const JSONAny::List& list, std::size_t indent) {
    out_ += "(\n";
    for (const auto& value : list) {
      if (full()) break;
      out_.append(indent + step, ' ');
      describe(value, indent + step);
      out_ += ",\n";
    }
    out_.append(indent, ' ') += ")";
  }

  void write(const JSONAny::Dictionary& members, std::size_t indent) {
    out_ += "{\n";
    for (const auto& member : members) {
      if (full()) break;
      out_.append(indent + step, ' ') += member.key.substr(0, limit_) + " = ";
      describe(member.value, indent + step);
      out_ += ";\n";
    }
    out_.append(indent, ' ') += "}";
  }

  [[nodiscard]] bool full() const { return out_.size() > limit_; }

  static constexpr std::size_t step = 4;
  std::string& out_;
  std::size_t limit_;
};

}  // namespace

std::string messageText(const JSONAny& body, std::size_t limit) {
  if (const auto* text = body.as<std::string>()) return *text;
  std::string description;
  Describer(description, limit).describe(body, 0);
  return description;
}

}  // namespace VorselKelp
