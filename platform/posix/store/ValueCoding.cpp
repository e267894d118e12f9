#include "store/ValueCoding.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace VorselKelp::posix {
namespace {

using platform::DefaultsValue;
using platform::TextList;

/// Each text after its length in four bytes, the lowest first.
std::string encoded(const TextList& list) {
  std::string bytes;
  for (const auto& text : list) {
    const auto size = static_cast<std::uint32_t>(text.size());
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(size >> shift & 0xff);
    bytes += text;
  }
  return bytes;
}

std::optional<TextList> decodedList(std::string_view bytes) {
  TextList list;
  while (!bytes.empty()) {
    if (bytes.size() < 4) return {};
    std::uint32_t size = 0;
    for (std::size_t i = 0; i < 4; ++i)
      size |= std::uint32_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    bytes.remove_prefix(4);
    if (bytes.size() < size) return {};
    list.emplace_back(bytes.substr(0, size));
    bytes.remove_prefix(size);
  }
  return list;
}

/// What an entry makes of the map that holds it.
StoredMapKind kindOfEntry(const DefaultsValue& entry) {
  if (entry.as<std::string>()) return StoredMapKind::texts;
  if (entry.as<double>()) return StoredMapKind::reals;
  if (entry.as<TextList>()) return StoredMapKind::lists;
  const auto* inner = entry.as<DefaultsValue::Map>();
  const bool allTexts = inner && std::ranges::all_of(*inner, [](const auto& pair) {
                          return pair.second.template as<std::string>() != nullptr;
                        });
  return allTexts ? StoredMapKind::textMaps : StoredMapKind::mixed;
}

}  // namespace

StoredMapKind storedKind(platform::MapKind kind) {
  switch (kind) {
    case platform::MapKind::textMap:
      return StoredMapKind::texts;
    case platform::MapKind::realMap:
      return StoredMapKind::reals;
    case platform::MapKind::listMap:
      return StoredMapKind::lists;
    case platform::MapKind::textMapMap:
      return StoredMapKind::textMaps;
  }
  return StoredMapKind::mixed;
}

StoredMapKind storedKind(const DefaultsValue::Map& map) {
  if (map.empty()) return StoredMapKind::empty;
  const auto first = kindOfEntry(map.begin()->second);
  const bool uniform =
      std::ranges::all_of(map, [first](const auto& pair) { return kindOfEntry(pair.second) == first; });
  return uniform ? first : StoredMapKind::mixed;
}

bool isStorable(const DefaultsValue& value) {
  const auto* map = value.as<DefaultsValue::Map>();
  if (!map) return true;
  return std::ranges::all_of(*map, [](const auto& pair) {
    const auto* inner = pair.second.template as<DefaultsValue::Map>();
    return !inner || std::ranges::none_of(*inner, [](const auto& leaf) {
      return leaf.second.template as<DefaultsValue::Map>() != nullptr;
    });
  });
}

bool isEntryOf(platform::MapKind kind, const DefaultsValue& value) {
  if (kind == platform::MapKind::textMapMap) return value.as<std::string>() != nullptr;
  return kindOfEntry(value) == storedKind(kind);
}

RowValue::RowValue(const DefaultsValue& value, std::optional<StoredMapKind> mapKind)
    : value_(value), mapKind_(mapKind) {
  if (const auto* list = value.as<TextList>()) list_ = encoded(*list);
}

void RowValue::bindTo(Database::Query& query) const {
  const auto kind = [&query](RowKind k) { query.bind(static_cast<std::int64_t>(k)); };
  if (const auto* boolean = value_.as<bool>()) {
    kind(RowKind::boolean);
    query.bind(std::int64_t{*boolean});
  } else if (const auto* integer = value_.as<std::int64_t>()) {
    kind(RowKind::integer);
    query.bind(*integer);
  } else if (const auto* real = value_.as<double>()) {
    kind(RowKind::real);
    query.bind(*real);  // a NaN becomes NULL there
  } else if (const auto* text = value_.as<std::string>()) {
    kind(RowKind::text);
    query.bind(*text);
  } else if (value_.as<TextList>()) {
    kind(RowKind::list);
    query.bindBlob(list_);
  } else {
    kind(RowKind::map);
    if (mapKind_) {
      query.bind(static_cast<std::int64_t>(*mapKind_));
    } else {
      query.bindNull();
    }
  }
}

std::optional<DefaultsValue> rowValue(const Database::Query& query, int kindColumn) {
  const int valueColumn = kindColumn + 1;
  switch (static_cast<RowKind>(query.integer(kindColumn))) {
    case RowKind::boolean:
      return DefaultsValue{query.integer(valueColumn) != 0};
    case RowKind::integer:
      return DefaultsValue{query.integer(valueColumn)};
    case RowKind::real:
      return DefaultsValue{query.isNull(valueColumn) ? std::numeric_limits<double>::quiet_NaN()
                                                     : query.real(valueColumn)};
    case RowKind::text:
      return DefaultsValue{std::string(query.bytes(valueColumn))};
    case RowKind::list:
      if (auto list = decodedList(query.bytes(valueColumn))) return DefaultsValue{std::move(*list)};
      return {};
    case RowKind::map:
      return DefaultsValue{DefaultsValue::Map{}};
  }
  return {};
}

}  // namespace VorselKelp::posix
