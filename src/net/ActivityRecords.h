#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "core/SessionStep.h"
#include "json/KeyTable.h"

/// The bodies sent to the collection servers. Members without a key are filled and carried, and never sent.
namespace VorselKelp {

/// Session block.
struct CS {
  std::int64_t ns = 0;   ///< sessions so far
  std::string sid;       ///< current session id
  std::int64_t scn = 0;  ///< screens visited in the session
  std::string cid;       ///< unique id of the installation
};

[[nodiscard]] inline CS sessionBlock(SessionValues values) {
  return {values.number, std::move(values.id), values.visitedCount, std::move(values.uniqueId)};
}

/// Device block.
struct UserAgent {
  std::optional<std::int64_t> z;
  std::optional<std::string> t;
  std::optional<std::string> de;  ///< language code
  std::optional<std::string> dt;
  std::optional<std::string> sr;  ///< screen size in points: height, "x", width
  std::optional<std::string> vp;
  std::optional<std::string> n;
  std::optional<std::string> v;  ///< application version
};

/// Every report to the activity endpoint.
struct ActivityBody {
  std::int64_t timestamp = 0;  ///< whole seconds since 1970
  std::string app;
  std::optional<std::map<std::string, std::string>> e;  ///< event parameters
  std::optional<std::string> sdkVersion;
  std::optional<std::string> version;  ///< of the operating system
  std::optional<std::string> model;
  std::optional<std::string> lang;
  std::optional<std::map<std::string, std::string>> u;  ///< user values
  std::optional<std::int64_t> code;
  CS cs;
  std::optional<std::string> dl;
  std::optional<std::string> vt;    ///< first-visit time of the installation
  std::optional<std::int64_t> tmz;  ///< whole hours from GMT
  std::optional<std::string> msg;
  UserAgent ua;
  std::optional<std::string> rid;  ///< user id; not sent
  std::optional<std::string> dr;   ///< referrer; not sent
};

/// The device-token report to the users endpoint.
struct PushBody {
  std::int64_t timestamp = 0;
  std::string app;
  std::optional<std::string> appVersion;
  std::optional<std::string> sdkVersion;
  std::optional<std::string> os;
  std::optional<std::string> version;
  std::optional<std::string> mfg;
  std::optional<std::string> model;
  std::optional<std::string> sdk;
  std::optional<std::string> lang;
  std::optional<std::map<std::string, std::string>> u;
  std::optional<std::string> token;
  std::optional<bool> status;
  CS cs;
  std::optional<std::string> rid;
  std::int64_t code = 0;
  std::optional<std::string> bundle;  ///< not sent
};

namespace json {

template <>
struct KeyTable<CS> {
  static constexpr auto keys =
      std::tuple{key("ns", &CS::ns), key("sid", &CS::sid), key("scn", &CS::scn), key("cid", &CS::cid)};
};

template <>
struct KeyTable<UserAgent> {
  using R = UserAgent;
  static constexpr auto keys =
      std::tuple{key("z", &R::z),   key("t", &R::t),   key("de", &R::de), key("dt", &R::dt),
                 key("sr", &R::sr), key("vp", &R::vp), key("n", &R::n),   key("v", &R::v)};
};

template <>
struct KeyTable<ActivityBody> {
  using R = ActivityBody;
  static constexpr auto keys = std::tuple{key("ts_current", &R::timestamp),
                                          key("app", &R::app),
                                          key("e", &R::e),
                                          key("ver", &R::sdkVersion),
                                          key("version", &R::version),
                                          key("model", &R::model),
                                          key("lang", &R::lang),
                                          key("u", &R::u),
                                          key("code", &R::code),
                                          key("cs", &R::cs),
                                          key("dl", &R::dl),
                                          key("vt", &R::vt),
                                          key("tmz", &R::tmz),
                                          key("msg", &R::msg),
                                          key("ua", &R::ua)};
};

template <>
struct KeyTable<PushBody> {
  using R = PushBody;
  static constexpr auto keys = std::tuple{key("ts_current", &R::timestamp),
                                          key("app", &R::app),
                                          key("app_version", &R::appVersion),
                                          key("sdk_version", &R::sdkVersion),
                                          key("os", &R::os),
                                          key("version", &R::version),
                                          key("mfg", &R::mfg),
                                          key("model", &R::model),
                                          key("sdk", &R::sdk),
                                          key("lang", &R::lang),
                                          key("u", &R::u),
                                          key("token", &R::token),
                                          key("status", &R::status),
                                          key("cs", &R::cs),
                                          key("rid", &R::rid),
                                          key("code", &R::code)};
};

}  // namespace json
}  // namespace VorselKelp
