#pragma once

#include <string_view>
#include <tuple>

namespace VorselKelp::json {

/// One line of a record's key table: the JSON key and the member that it fills. Whether the key may be
/// missing is told by the member's type: a std::optional may be missing or null, everything else is required.
template <class Record, class Member>
struct Key {
  std::string_view name;
  Member Record::*member;
};

template <class Record, class Member>
constexpr Key<Record, Member> key(std::string_view name, Member Record::*member) {
  return {name, member};
}

/// The key table of a record: specialised beside each record with
///   static constexpr auto keys = std::tuple{key("title", &NotificationBody::title), ...};
/// in the order in which keys are written. It alone drives decoding, encoding and description.
template <class Record>
struct KeyTable;

template <class T>
concept Tabled = requires {
  KeyTable<T>::keys;
};

}  // namespace VorselKelp::json
