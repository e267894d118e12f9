#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Result.h"
#include "json/KeyTable.h"
#include "json/Writer.h"

namespace VorselKelp::json {

inline void encodeValue(Writer& out, bool value) {
  out.boolean(value);
}
inline void encodeValue(Writer& out, std::int64_t value) {
  out.number(value);
}
inline void encodeValue(Writer& out, const std::string& value) {
  out.text(value);
}

template <class T>
void encodeValue(Writer& out, const std::vector<T>& list);
template <class T>
void encodeValue(Writer& out, const std::map<std::string, T>& map);
template <Tabled Record>
void encodeValue(Writer& out, const Record& record);

template <class T>
void encodeValue(Writer& out, const std::vector<T>& list) {
  out.raw("[");
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (i > 0) out.raw(",");
    encodeValue(out, list[i]);
  }
  out.raw("]");
}

template <class T>
void encodeValue(Writer& out, const std::map<std::string, T>& map) {
  out.raw("{");
  bool first = true;
  for (const auto& [key, value] : map) {
    out.key(key, first);
    encodeValue(out, value);
    first = false;
  }
  out.raw("}");
}

template <class T>
void encodeMember(Writer& out, std::string_view name, const T& value, bool& first) {
  out.key(name, first);
  encodeValue(out, value);
  first = false;
}

/// An absent optional is left out, never written as null.
template <class T>
void encodeMember(Writer& out, std::string_view name, const std::optional<T>& value, bool& first) {
  if (value) encodeMember(out, name, *value, first);
}

template <Tabled Record>
void encodeValue(Writer& out, const Record& record) {
  out.raw("{");
  bool first = true;
  std::apply([&](const auto&... keys) { (encodeMember(out, keys.name, record.*keys.member, first), ...); },
             KeyTable<Record>::keys);
  out.raw("}");
}

/// The record as one JSON object, keys in the order of its table.
template <class Record>
Result<std::string> encode(const Record& record) {
  Writer out;
  encodeValue(out, record);
  if (out.failed()) return Error{"a text of the record is not UTF-8"};
  return out.take();
}

}  // namespace VorselKelp::json
