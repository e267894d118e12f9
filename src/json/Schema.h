#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
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
  out.raw(R"({"type":"integer","minimum":-9223372036854775808,"maximum":9223372036854775807})");
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

/// The members of an object that is read as each of `Records`, without its braces.
template <Tabled... Records>
void describeMembers(Writer& out) {
  out.raw(R"("type":"object","properties":{)");
  std::set<std::string_view> described;
  const auto property = [&]<class Record, class Member>(const Key<Record, Member>& key) {
    const bool first = described.empty();
    if (!described.insert(key.name).second) return;
    out.key(key.name, first);
    describe(out, Described<Member>{});
  };
  const auto properties = [&](const auto&... keys) { (property(keys), ...); };
  (std::apply(properties, KeyTable<Records>::keys), ...);
  out.raw(R"(},"required":[)");
  bool first = true;
  const auto require = [&]<class Record, class Member>(const Key<Record, Member>& key) {
    if (mayBeMissing<Member>) return;
    if (!first) out.raw(",");
    out.text(key.name);
    first = false;
  };
  const auto requirements = [&](const auto&... keys) { (require(keys), ...); };
  (std::apply(requirements, KeyTable<Records>::keys), ...);
  out.raw("]");
}

template <Tabled Record>
void describe(Writer& out, Described<Record>) {
  out.raw("{");
  describeMembers<Record>(out);
  out.raw("}");
}

/// The JSON Schema of an object that is read as each of `Records`, made from their key tables: a key that two
/// of them have is described as in the first. `more` are further members of the schema, a comma in front of
/// each.
template <Tabled... Records>
std::string schema(std::string_view title, std::string_view more = {}) {
  Writer out;
  out.raw(R"({"$schema":"https://json-schema.org/draft/2020-12/schema","title":)");
  out.text(title);
  out.raw(",");
  describeMembers<Records...>(out);
  out.raw(more);
  out.raw("}");
  return out.take();
}

}  // namespace VorselKelp::json
