#pragma once

#include <boost/json.hpp>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Result.h"
#include "json/Document.h"
#include "json/KeyTable.h"

namespace VorselKelp::json {

/// Where in the document a value stands: a chain of stack frames, turned into text only when something is
/// wrong.
struct Place {
  const Place* parent = nullptr;
  std::string_view key;  ///< empty inside a list
  std::size_t index = 0;
};

/// What went wrong first: "aps.alert.title: expected text, found number".
class Failure {
 public:
  /// Both always answer false, the result of the decoding that they end.
  bool expected(std::string_view wanted, const boost::json::value& found, const Place& place);
  bool missing(std::string_view key, const Place& place);
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  std::string text_;
};

bool decodeValue(const boost::json::value& json, bool& out, const Place& place, Failure& failure);
bool decodeValue(const boost::json::value& json, std::int64_t& out, const Place& place, Failure& failure);
bool decodeValue(const boost::json::value& json, std::string& out, const Place& place, Failure& failure);

template <class T>
bool decodeValue(const boost::json::value& json, std::optional<T>& out, const Place& place, Failure& failure);
template <class T>
bool decodeValue(const boost::json::value& json, std::vector<T>& out, const Place& place, Failure& failure);
template <class T>
bool decodeValue(const boost::json::value& json, std::map<std::string, T>& out, const Place& place,
                 Failure& failure);
template <Tabled Record>
bool decodeValue(const boost::json::value& json, Record& out, const Place& place, Failure& failure);

template <class T>
inline constexpr bool mayBeMissing = false;
template <class T>
inline constexpr bool mayBeMissing<std::optional<T>> = true;

template <class T>
bool decodeValue(const boost::json::value& json, std::optional<T>& out, const Place& place,
                 Failure& failure) {
  if (json.is_null()) return true;
  return decodeValue(json, out.emplace(), place, failure);
}

template <class T>
bool decodeValue(const boost::json::value& json, std::vector<T>& out, const Place& place, Failure& failure) {
  const auto* list = json.if_array();
  if (!list) return failure.expected("list", json, place);
  out.reserve(list->size());
  for (std::size_t i = 0; i < list->size(); ++i) {
    if (!decodeValue((*list)[i], out.emplace_back(), {&place, {}, i}, failure)) return false;
  }
  return true;
}

template <class T>
bool decodeValue(const boost::json::value& json, std::map<std::string, T>& out, const Place& place,
                 Failure& failure) {
  const auto* object = json.if_object();
  if (!object) return failure.expected("object", json, place);
  for (const auto& member : *object) {
    if (!decodeValue(member.value(), out[member.key()], {&place, member.key(), 0}, failure)) return false;
  }
  return true;
}

template <class Record, class Member>
bool decodeKey(const boost::json::object& object, const Key<Record, Member>& key, Record& out,
               const Place& place, Failure& failure) {
  const auto* found = object.if_contains(key.name);
  if (found) return decodeValue(*found, out.*key.member, {&place, key.name, 0}, failure);
  return mayBeMissing<Member> || failure.missing(key.name, place);
}

template <Tabled Record>
bool decodeValue(const boost::json::value& json, Record& out, const Place& place, Failure& failure) {
  const auto* object = json.if_object();
  if (!object) return failure.expected("object", json, place);
  return std::apply(
      [&](const auto&... keys) { return (decodeKey(*object, keys, out, place, failure) && ...); },
      KeyTable<Record>::keys);
}

/// Reads a record out of a parsed value; keys that the table does not name are ignored.
template <class Record>
Result<Record> decode(const boost::json::value& json) {
  Record record{};
  Failure failure;
  if (decodeValue(json, record, {}, failure)) return record;
  return Error{failure.text()};
}

template <class Record>
Result<Record> decode(std::string_view text) {
  const auto document = Document::parse(text);
  if (!document) return document.error();
  return decode<Record>(document->root());
}

}  // namespace VorselKelp::json
