#include <gtest/gtest.h>

#include <map>
#include <string>

#include "core/TestCore.h"
#include "json/Encoder.h"
#include "net/ReportBuilder.h"

namespace VorselKelp {
namespace {

const CS session{3, "1794709483", 2, "1794709000.0123456789"};

class ReportTest : public testing::Test {
 protected:
  std::string activity() { return *json::encode(ReportBuilder(core_.context).activity(session)); }

  TestCore core_;
};

TEST_F(ReportTest, AnActivityAsTheBuilderLeavesIt) {
  core_.app.standardDomain->setObject("vs_user_id", {std::string("user-1")});
  core_.app.standardDomain->setObject("vs_uniq_session_first_time", {std::string("1794709000")});
  EXPECT_EQ(
      activity(),
      R"({"ts_current":1794709483,"app":"com.example.app","ver":"2.0.0","version":"17.4","model":"iPhone 12",)"
      R"("lang":"en","u":{},"cs":{"ns":3,"sid":"1794709483","scn":2,"cid":"1794709000.0123456789"},)"
      R"("vt":"1794709000","tmz":1,"ua":{"z":1,"t":"iOS","de":"en","sr":"844.0x390.0","vp":"844.0x390.0",)"
      R"("v":"1.0"}})");
}

TEST_F(ReportTest, AnActivityWithEverything) {
  ActivityBody body = ReportBuilder(core_.context).activity(session);
  body.e = std::map<std::string, std::string>{{"b", "2"}, {"a", "\"1\""}};
  body.u = std::map<std::string, std::string>{{"k", "v"}};
  body.code = 205;
  body.dl = "link";
  body.vt = "1";
  body.msg = "text";
  body.ua.dt = "d";
  body.ua.n = "n";
  body.rid = "never";
  body.dr = "sent";
  EXPECT_EQ(
      *json::encode(body),
      R"({"ts_current":1794709483,"app":"com.example.app","e":{"a":"\"1\"","b":"2"},"ver":"2.0.0","version":"17.4",)"
      R"("model":"iPhone 12","lang":"en","u":{"k":"v"},"code":205,)"
      R"("cs":{"ns":3,"sid":"1794709483","scn":2,"cid":"1794709000.0123456789"},"dl":"link","vt":"1","tmz":1,)"
      R"("msg":"text","ua":{"z":1,"t":"iOS","de":"en","dt":"d","sr":"844.0x390.0","vp":"844.0x390.0","n":"n",)"
      R"("v":"1.0"}})");
}

TEST_F(ReportTest, AnEmptyLanguageOrVersionIsLeftOut) {
  auto values = core_.app.device->hardware->values();
  values.languageCode = values.systemVersion = "";
  core_.app.device->hardware->set(values);
  core_.app.bundle->setMain("CFBundleShortVersionString", "");
  core_.app.bundle->setLibrary("CFBundleShortVersionString", "");
  for (const auto& report : {activity(), *json::encode(ReportBuilder(core_.context).push(session, "00"))}) {
    for (const char* key :
         {"\"ver\"", "\"version\"", "\"lang\"", "\"de\"", "\"v\"", "\"app_version\"", "\"sdk_version\""})
      EXPECT_EQ(report.find(key), std::string::npos) << key << report;
  }
}

TEST_F(ReportTest, TellsWhatTheDeviceSaysOfItself) {
  auto values = core_.app.device->hardware->values();
  values.machineIdentifier = "x86_64";
  values.systemName = "Debian GNU/Linux";
  values.systemFamily = "Linux";
  values.manufacturer = "Maker";
  values.productName = "Book 7";
  core_.app.device->hardware->set(values);
  EXPECT_NE(activity().find(R"("model":"Book 7")"), std::string::npos);
  EXPECT_NE(activity().find(R"("t":"Linux")"), std::string::npos);
  const auto token = *json::encode(ReportBuilder(core_.context).push(session, "00"));
  const auto* told = R"("os":"Debian GNU/Linux","version":"17.4","mfg":"Maker","model":"Book 7")";
  EXPECT_NE(token.find(told), std::string::npos) << token;
  values.manufacturer = "";
  core_.app.device->hardware->set(values);
  EXPECT_EQ(json::encode(ReportBuilder(core_.context).push(session, "00"))->find("mfg"), std::string::npos);
}

TEST_F(ReportTest, WhatIsAbsentIsLeftOut) {
  ActivityBody body;
  body.timestamp = 1;
  body.app = "a";
  body.cs = session;
  EXPECT_EQ(
      *json::encode(body),
      R"({"ts_current":1,"app":"a","cs":{"ns":3,"sid":"1794709483","scn":2,"cid":"1794709000.0123456789"},"ua":{}})");
  for (const char* key : {"CFBundleIdentifier", "CFBundleShortVersionString"})
    core_.app.bundle->setMain(key, {});
  core_.app.bundle->setLibrary("CFBundleShortVersionString", {});
  const std::string bare = activity();
  EXPECT_NE(bare.find(R"("app":"Bundle error","version":)"), std::string::npos) << bare;
  EXPECT_TRUE(bare.ends_with(R"("vp":"844.0x390.0"}})")) << bare;
}

TEST_F(ReportTest, TheTimeZoneIsInWholeHoursTowardZero) {
  const std::pair<int, const char*> zones[] = {{-12600, "\"tmz\":-3,"},
                                               {20700, "\"tmz\":5,"},
                                               {-3599, "\"tmz\":0,"},
                                               {0, "\"tmz\":0,"},
                                               {50400, "\"tmz\":14,"}};
  for (const auto& [seconds, expected] : zones) {
    auto values = core_.app.device->hardware->values();
    values.secondsFromGMT = seconds;
    core_.app.device->hardware->set(values);
    EXPECT_NE(activity().find(expected), std::string::npos) << seconds;
  }
}

TEST_F(ReportTest, SizesAreWrittenAsDoubles) {
  core_.app.device->screen->set(375.5, 1366);
  EXPECT_NE(activity().find(R"("sr":"1366.0x375.5","vp":"1366.0x375.5")"), std::string::npos);
}

TEST_F(ReportTest, ATokenReport) {
  core_.app.standardDomain->setObject("vs_user_id", {std::string("user-1")});
  core_.context->state.setUserValue("plan", "gold");
  auto body = ReportBuilder(core_.context).push(session, "00ab0f");
  EXPECT_EQ(
      *json::encode(body),
      R"({"ts_current":1794709483,"app":"com.example.app","app_version":"1.0","sdk_version":"2.0.0","os":"iOS",)"
      R"("version":"17.4","mfg":"Apple","model":"iPhone 12","sdk":"VorselKelp","lang":"en","u":{"plan":"gold"},)"
      R"("token":"00ab0f","status":true,"cs":{"ns":3,"sid":"1794709483","scn":2,"cid":"1794709000.0123456789"},)"
      R"("rid":"user-1","code":200})");
  PushBody bare;
  bare.cs = session;
  EXPECT_EQ(
      *json::encode(bare),
      R"({"ts_current":0,"app":"","cs":{"ns":3,"sid":"1794709483","scn":2,"cid":"1794709000.0123456789"},"code":0})");
}

}  // namespace
}  // namespace VorselKelp
