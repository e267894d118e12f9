#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "json/KeyTable.h"

namespace VorselKelp {

/// The creative of an ad. Tracker texts are templates: "${l2}" stands for `l2`.
struct Md {
  std::optional<std::string> phone;
  std::optional<std::string> l2;
  std::optional<std::string> img;  ///< image URL
  std::optional<std::string> displayurl;
  std::optional<std::string> sprice;
  std::optional<std::int64_t> cmpid;  ///< campaign
  std::optional<std::string> downl;
  std::optional<std::string> url;  ///< click-through
  std::optional<std::string> title;
  std::optional<std::vector<std::string>> cpmT;  ///< impression trackers
  std::optional<std::vector<std::string>> cpvT;  ///< view trackers
  std::optional<std::vector<std::string>> cpcT;  ///< click trackers
  std::optional<std::int64_t> creid;             ///< creative
};

struct Item {
  std::optional<Md> md;
  std::optional<bool> s;
  std::optional<std::int64_t> w;
  std::optional<std::string> r;
  std::optional<std::int64_t> h;
  std::optional<std::string> l;
  std::optional<std::string> e;
};

/// A name that no other view in this process has. Any thread.
[[nodiscard]] std::string newViewId();

/// An ad feed's answer. Only the first item is used.
struct AdexObject {
  std::optional<std::vector<Item>> items;
  std::optional<std::string> sessionID;
  std::optional<std::string> callback;
  std::optional<std::int64_t> elapsed;
  std::optional<std::string> ts;
  std::string viewId = newViewId();  ///< not part of the answer; names the view that will show the ad

  /// The first item's picture; absent when there are no items or it has no creative. A list without items
  /// stops the process: a feed that answers with one must be told apart before.
  [[nodiscard]] std::optional<std::string> getImageUrl() const;

  /// The first item's creative; absent when there is no item or it has none.
  [[nodiscard]] const Md* creative() const {
    return items && !items->empty() && items->front().md ? &*items->front().md : nullptr;
  }
};

namespace json {

template <>
struct KeyTable<Md> {
  static constexpr auto keys =
      std::tuple{key("l2", &Md::l2),       key("img", &Md::img),       key("cmpid", &Md::cmpid),
                 key("url", &Md::url),     key("title", &Md::title),   key("phone", &Md::phone),
                 key("downl", &Md::downl), key("sprice", &Md::sprice), key("displayurl", &Md::displayurl),
                 key("cpm_t", &Md::cpmT),  key("cpv_t", &Md::cpvT),    key("cpc_t", &Md::cpcT),
                 key("creid", &Md::creid)};
};

template <>
struct KeyTable<Item> {
  static constexpr auto keys =
      std::tuple{key("md", &Item::md), key("s", &Item::s), key("w", &Item::w), key("r", &Item::r),
                 key("h", &Item::h),   key("l", &Item::l), key("e", &Item::e)};
};

template <>
struct KeyTable<AdexObject> {
  using R = AdexObject;
  static constexpr auto keys =
      std::tuple{key("items", &R::items), key("session_id", &R::sessionID), key("callback", &R::callback),
                 key("elapsed", &R::elapsed), key("ts", &R::ts)};
};

}  // namespace json
}  // namespace VorselKelp
