#include <limits>
#include <string>
#include <vector>

#include "kellp/KellpTest.h"

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

class AdministrativeTest : public KellpTest {
 protected:
  AdministrativeTest() {
    VorselKellp::setValueFor(group);
    store().setObject("vs_push", {true});
  }

  void receive(const platform::UserInfo& userInfo) {
    VorselKellp::didReciveAdministrativeNotificationWith(userInfo, [this](auto geofences, auto beacons) {
      ++calls_;
      EXPECT_NE(geofences.has_value(), beacons.has_value());
      geofences_ = geofences ? std::optional(geofences->gl) : std::nullopt;
      beacons_ = beacons ? std::optional(beacons->bl) : std::nullopt;
    });
  }
  void receiveAlert(const std::string& alert) {
    receive(platform::UserInfo::fromJSON(R"({"aps":{"alert":)" + alert + "}}"));
  }

  int calls_ = 0;
  std::optional<std::vector<Gl>> geofences_;
  std::optional<std::vector<B>> beacons_;
};

TEST_F(AdministrativeTest, HandsOverTheGeofencesOrElseTheBeaconsInOrder) {
  receiveAlert(R"({"gl":[{"c":["1","2"],"e":"x","er":true,"lr":false,"r":7.0,"id":"g1","more":1},)"
               R"({"c":[],"id":"g2"}],"bl":[{"id":"b","ib":"i"}]})");
  const Gl full{{"1", "2"}, "x", true, false, 7, "g1"};
  const Gl bare{{}, {}, {}, {}, {}, "g2"};
  EXPECT_THAT(geofences_, Optional(ElementsAre(full, bare)));
  receiveAlert(R"({"bl":[{"id":"b1","ib":"i1","major":1,"minor":2,"distance":3},{"id":"b2","ib":"i2"}]})");
  const B fullBeacon{"b1", "i1", 1, 2, 3};
  const B bareBeacon{"b2", "i2", {}, {}, {}};
  EXPECT_THAT(beacons_, Optional(ElementsAre(fullBeacon, bareBeacon)));
  receiveAlert(R"({"gl":[],"bl":[{"id":"b","ib":"i"}]})");
  EXPECT_THAT(geofences_, Optional(IsEmpty()));
  EXPECT_EQ(calls_, 3);

  using Dictionary = JSONAny::Dictionary;
  const Dictionary beacon{{"id", "b"}, {"ib", "i"}};
  receive(platform::UserInfo(Dictionary{
      {"formless", std::numeric_limits<double>::quiet_NaN()},
      {"aps", Dictionary{{"alert", Dictionary{{"text", "\xff"}, {"bl", JSONAny::List{beacon}}}}}}}));
  EXPECT_THAT(beacons_, Optional(ElementsAre(B{"b", "i", {}, {}, {}})))
      << "a dictionary serves like bytes, whatever stands beside the list";
}

TEST_F(AdministrativeTest, EntriesWithoutARequiredMemberAreLeftOutAndTheOthersHandedOver) {
  receiveAlert(R"({"gl":[{"id":"no c"},{"c":"text","id":"c"},{"c":["1",2],"id":"c"},{"c":["1"]},)"
               R"({"c":["1"],"id":5},{"c":null,"id":"n"},{},{"c":["1"],"id":"good"}]})");
  const Gl good{{"1"}, {}, {}, {}, {}, "good"};
  EXPECT_THAT(geofences_, Optional(ElementsAre(good)));
  receiveAlert(R"({"bl":[{"id":"b"},{"ib":"i"},{"id":1,"ib":"i"},{"id":"b","ib":[]},{"id":"b","ib":"i"}]})");
  EXPECT_THAT(beacons_, Optional(ElementsAre(B{"b", "i", {}, {}, {}})));
}

TEST_F(AdministrativeTest, AnOptionalMemberOfAnotherTypeCountsAsMissing) {
  receiveAlert(R"({"gl":[{"c":["1"],"e":5,"er":"yes","lr":null,"r":1.5,"id":"g"}]})");
  const Gl bare{{"1"}, {}, {}, {}, {}, "g"};
  EXPECT_THAT(geofences_, Optional(ElementsAre(bare)));
  receiveAlert(R"({"bl":[{"id":"b","ib":"i","major":"1","minor":2,"distance":{}}]})");
  const B bareBeacon{"b", "i", {}, 2, {}};
  EXPECT_THAT(beacons_, Optional(ElementsAre(bareBeacon)));
}

TEST_F(AdministrativeTest, AListWithAnotherElementThanADictionaryIsNoList) {
  receiveAlert(R"({"gl":[{"c":[],"id":"g"},5],"bl":[{"id":"b","ib":"i"}]})");
  EXPECT_TRUE(beacons_);
  receiveAlert(R"({"gl":{"c":[],"id":"g"},"bl":[]})");
  EXPECT_THAT(beacons_, Optional(IsEmpty()));
  EXPECT_EQ(calls_, 2);
}

TEST_F(AdministrativeTest, AnyOtherPushAndPushOffCallNothing) {
  for (const char* payload :
       {"{}", "[]", "not json", "", R"({"aps":5})", R"({"aps":{"alert":"text"}})", R"({"aps":{"alert":{}}})",
        R"({"aps":{"alert":{"gl":1}}})", R"({"aps":{"alert":{"bl":["b"]}}})", R"({"alert":{"gl":[]}})"})
    receive(platform::UserInfo::fromJSON(payload));
  VorselKellp::didReciveAdministrativeNotificationWith(
      platform::UserInfo::fromJSON(R"({"aps":{"alert":{"gl":[]}}})"), nullptr);
  store().setObject("vs_push", {false});
  receiveAlert(R"({"gl":[]})");
  EXPECT_EQ(calls_, 0);
  EXPECT_THAT(lines(), IsEmpty());
}

}  // namespace
}  // namespace VorselKelp
