#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "json/Decoder.h"
#include "json/KeyTable.h"
#include "json/Writer.h"

namespace VorselKelp::json {

/// Says which type of value is described; only its type counts.
template <class T>
struct Described {};

inline void describe(Writer& out, Described<bool>) {
  out.raw(R"({"type":"boolean"})");
}
inline void describe(Writer& out, Described<std::string>) {
  out.raw(R"({"type":"string"})");
}
inline void describe(Writer& out, Described<std::int64_t>) {
  out.raw(R"({"type":"integer"})");
}

template <class T>
void describe(Writer& out, Described<std::optional<T>>);
template <class T>
void describe(Writer& out, Described<std::vector<T>>);
template <class T>
void describe(Writer& out, Described<std::map<std::string, T>>);
template <Tabled Record>
void describe(Writer& out, Described<Record>);

/// What may be missing may be null too.
template <class T>
void describe(Writer& out, Described<std::optional<T>>) {
  out.raw(R"({"anyOf":[)");
  describe(out, Described<T>{});
  out.raw(R"(,{"type":"null"}]})");
}

template <class T>
void describe(Writer& out, Described<std::vector<T>>) {
  out.raw(R"({"type":"array","items":)");
  describe(out, Described<T>{});
  out.raw("}");
}

template <class T>
void describe(Writer& out, Described<std::map<std::string, T>>) {
  out.raw(R"({"type":"object","additionalProperties":)");
  describe(out, Described<T>{});
  out.raw("}");
}

/// The members of an object schema, without its braces.
template <Tabled Record>
void describeMembers(Writer& out) {
  out.raw(R"("type":"object","properties":{)");
  bool first = true;
  const auto property = [&]<class Member>(const Key<Record, Member>& key) {
    out.key(key.name, first);
    describe(out, Described<Member>{});
    first = false;
  };
  std::apply([&](const auto&... keys) { (property(keys), ...); }, KeyTable<Record>::keys);
  out.raw(R"(},"required":[)");
  first = true;
  const auto require = [&]<class Member>(const Key<Record, Member>& key) {
    if (mayBeMissing<Member>) return;
    if (!first) out.raw(",");
    out.text(key.name);
    first = false;
  };
  std::apply([&](const auto&... keys) { (require(keys), ...); }, KeyTable<Record>::keys);
  out.raw("]");
}

template <Tabled Record>
void describe(Writer& out, Described<Record>) {
  out.raw("{");
  describeMembers<Record>(out);
  out.raw("}");
}

/// The JSON Schema of a record, made from its key table.
template <Tabled Record>
std::string schema(std::string_view title) {
  Writer out;
  out.raw(R"({"$schema":"https://json-schema.org/draft/2020-12/schema","title":)");
  out.text(title);
  out.raw(",");
  describeMembers<Record>(out);
  out.raw("}");
  return out.take();
}

}  // namespace VorselKelp::json
