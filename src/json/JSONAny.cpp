#include "VorselKelp/JSONAny.h"

#include <algorithm>
#include <vector>

#include "json/Document.h"
#include "json/Writer.h"

namespace VorselKelp {
namespace {

JSONAny fromBoost(const boost::json::value& value) {
  switch (value.kind()) {
    case boost::json::kind::bool_:
      return value.get_bool();
    case boost::json::kind::int64:
      return value.get_int64();
    case boost::json::kind::uint64:
      return static_cast<double>(value.get_uint64());
    case boost::json::kind::double_:
      return value.get_double();
    case boost::json::kind::string:
      return std::string(value.get_string());
    case boost::json::kind::null:
      return JSONNull{};
    case boost::json::kind::array: {
      JSONAny::List list;
      list.reserve(value.get_array().size());
      for (const auto& element : value.get_array()) list.push_back(fromBoost(element));
      return list;
    }
    case boost::json::kind::object: {
      JSONAny::Dictionary dictionary;
      dictionary.reserve(value.get_object().size());
      for (const auto& member : value.get_object())
        dictionary.push_back({std::string(member.key()), fromBoost(member.value())});
      return dictionary;
    }
  }
  return JSONNull{};
}

std::vector<const JSONAny::Member*> sorted(const JSONAny::Dictionary& dictionary) {
  std::vector<const JSONAny::Member*> members;
  members.reserve(dictionary.size());
  for (const auto& member : dictionary) members.push_back(&member);
  std::ranges::stable_sort(members, {}, [](const auto* member) -> const std::string& { return member->key; });
  return members;
}

struct Encoder {
  json::Writer& out;

  void operator()(JSONNull) const { out.raw("null"); }
  void operator()(bool value) const { out.boolean(value); }
  void operator()(std::int64_t value) const { out.number(value); }
  void operator()(double value) const { out.number(value); }
  void operator()(const std::string& value) const { out.text(value); }
  void operator()(const JSONAny::List& list) const {
    out.raw("[");
    for (const auto& element : list) {
      if (&element != list.data()) out.raw(",");
      std::visit(*this, element.value);
    }
    out.raw("]");
  }
  void operator()(const JSONAny::Dictionary& dictionary) const {
    out.raw("{");
    for (const auto& member : dictionary) {
      out.key(member.key, &member == dictionary.data());
      std::visit(*this, member.value.value);
    }
    out.raw("}");
  }
};

}  // namespace

Result<JSONNull> JSONNull::decode(std::string_view json) {
  const auto any = JSONAny::decode(json);
  if (any && any->as<JSONNull>()) return JSONNull{};
  return Error{"Wrong type for JSONNull"};
}

Result<JSONAny> JSONAny::decode(std::string_view json) {
  const auto document = json::Document::parse(json);
  if (!document) return Error{"Cannot decode JSONAny"};
  return fromBoost(document->root());
}

Result<std::string> JSONAny::encode() const {
  json::Writer writer;
  std::visit(Encoder{writer}, value);
  if (writer.failed()) return Error{"Cannot encode JSONAny"};
  return writer.take();
}

const JSONAny* JSONAny::find(std::string_view key) const {
  const auto* members = as<Dictionary>();
  if (!members) return nullptr;
  const auto found = std::ranges::find(*members, key, &Member::key);
  return found == members->end() ? nullptr : &found->value;
}

bool operator==(const JSONAny& a, const JSONAny& b) {
  const auto* left = a.as<JSONAny::Dictionary>();
  const auto* right = b.as<JSONAny::Dictionary>();
  if (!left || !right) return a.value == b.value;
  const auto equal = [](const JSONAny::Member* x, const JSONAny::Member* y) { return *x == *y; };
  return std::ranges::equal(sorted(*left), sorted(*right), equal);
}

}  // namespace VorselKelp
