#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/PushRecords.h"
#include "json/KeyTable.h"

namespace VorselKelp {

/// The object under "aps" / "alert" of a single-message push: the whole message.
struct NotificationBody {
  std::optional<std::vector<std::string>> bl;
  std::optional<std::vector<Gl>> gl;
  std::string title;
  std::optional<bool> adex;      ///< the message asks for an interstitial ad
  std::optional<std::string> e;  ///< endpoint of an ad-only push
  std::optional<N> n;
  std::optional<std::string> v;               ///< view tracker
  std::optional<std::vector<std::string>> t;  ///< impression trackers
};

struct Aps {
  NotificationBody notificationBody;
  std::optional<std::int64_t> apnsPriority;
  std::optional<std::int64_t> mutableContent;
};

/// Root of a single-message push.
struct PushObj {
  Aps aps;
};

/// Root of a campaign.
struct PCampaignObject {
  std::vector<P> p;
  std::optional<std::vector<std::string>> t;  ///< impression trackers of the campaign
};

namespace json {

template <>
struct KeyTable<Gl> {
  static constexpr auto keys = std::tuple{key("c", &Gl::c),   key("e", &Gl::e), key("er", &Gl::er),
                                          key("lr", &Gl::lr), key("r", &Gl::r), key("id", &Gl::id)};
};

template <>
struct KeyTable<B> {
  static constexpr auto keys = std::tuple{key("id", &B::id), key("ib", &B::ib), key("major", &B::major),
                                          key("minor", &B::minor), key("distance", &B::distance)};
};

template <>
struct KeyTable<Action> {
  static constexpr auto keys =
      std::tuple{key("action", &Action::action), key("title", &Action::title), key("url", &Action::url)};
};

template <>
struct KeyTable<Conversion> {
  static constexpr auto keys = std::tuple{key("url", &Conversion::url), key("t", &Conversion::t)};
};

template <>
struct KeyTable<N> {
  static constexpr auto keys = std::tuple{key("renotify", &N::renotify),
                                          key("el", &N::el),
                                          key("ap", &N::ap),
                                          key("an", &N::an),
                                          key("tc", &N::tc),
                                          key("dc", &N::dc),
                                          key("cl", &N::cl),
                                          key("tag", &N::tag),
                                          key("sound", &N::sound),
                                          key("vibrate", &N::vibrate),
                                          key("badge", &N::badge),
                                          key("image", &N::image),
                                          key("body", &N::body),
                                          key("actions", &N::actions),
                                          key("data", &N::data),
                                          key("silent", &N::silent),
                                          key("tid", &N::tid),
                                          key("scl", &N::scl)};
};

template <>
struct KeyTable<NotificationBody> {
  using R = NotificationBody;
  static constexpr auto keys =
      std::tuple{key("bl", &R::bl), key("gl", &R::gl), key("title", &R::title), key("adex", &R::adex),
                 key("e", &R::e),   key("n", &R::n),   key("v", &R::v),         key("t", &R::t)};
};

template <>
struct KeyTable<Aps> {
  static constexpr auto keys =
      std::tuple{key("alert", &Aps::notificationBody), key("apns-priority", &Aps::apnsPriority),
                 key("mutable-content", &Aps::mutableContent)};
};

template <>
struct KeyTable<PushObj> {
  static constexpr auto keys = std::tuple{key("aps", &PushObj::aps)};
};

template <>
struct KeyTable<P> {
  static constexpr auto keys = std::tuple{key("i", &P::i), key("o", &P::o), key("t", &P::t)};
};

template <>
struct KeyTable<PCampaignObject> {
  static constexpr auto keys = std::tuple{key("p", &PCampaignObject::p), key("t", &PCampaignObject::t)};
};

template <>
struct KeyTable<MultiMessagePush> {
  static constexpr auto keys =
      std::tuple{key("p", &MultiMessagePush::p), key("isMultiple", &MultiMessagePush::isMultiple)};
};

}  // namespace json
}  // namespace VorselKelp
