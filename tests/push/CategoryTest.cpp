#include <string>
#include <vector>

#include "push/ServiceTest.h"

namespace VorselKelp {
namespace {

using platform::DefaultsValue;
using platform::NotificationAction;
using platform::NotificationActionOption;
using platform::NotificationCategory;
using platform::TextList;
using testing::ElementsAre;

class CategoryTest : public ServiceTest {
 protected:
  testing_platform::MemoryNotificationCenter& center() { return *device_->notificationCenter; }
  bool registered(const std::string& identifier) {
    const auto categories = center().categories();
    return std::ranges::find(categories, identifier, &NotificationCategory::identifier) != categories.end();
  }
  std::string deliverWith(const std::string& actions, const std::string& identifier) {
    return deliver(message(",\"n\":{" + actions + "}"), identifier)->categoryIdentifier;
  }
};

TEST_F(CategoryTest, ButtonsInTheirOrder) {
  const std::string identifier = deliverWith(
      R"("actions":[{"action":"a","title":"Nope"},{"action":"b","title":"nO"},{"action":"a","title":"No "}])",
      "n-1");
  const NotificationCategory expected{identifier,
                                      {NotificationAction{"a", "Nope", NotificationActionOption::foreground},
                                       NotificationAction{"b", "nO", NotificationActionOption::destructive},
                                       NotificationAction{"a", "No ", NotificationActionOption::foreground}},
                                      true};
  EXPECT_THAT(center().categories(), ElementsAre(expected));
  EXPECT_FALSE(store().object("vs_url")) << "no action had a URL";
  EXPECT_EQ(deliverWith(R"("actions":[{"action":"c","title":"C"}])", "n-1"), identifier);
  const NotificationCategory again{identifier, {NotificationAction{"c", "C"}}, true};
  EXPECT_THAT(center().categories(), ElementsAre(again)) << "delivered again, it has the new buttons alone";
}

TEST_F(CategoryTest, EveryMessageGetsOneOfItsOwnNextToTheOthers) {
  center().setNotificationCategories({{"app", {}, false}});
  const std::string first = deliverWith("", "n-1");
  const std::string second = deliverWith(R"("actions":[])", "n-2");
  EXPECT_NE(first, second);
  EXPECT_EQ(deliverWith("", "n-1"), first) << "the same notification, the same category";
  EXPECT_TRUE(registered("app") && registered(first) && registered(second));
  EXPECT_EQ(center().categories().size(), 3u);
}

TEST_F(CategoryTest, WithAGroupTheListIsReadFromTheStandardDomainAndWrittenToTheSuite) {
  service_.standardDomain->setObject("vs_category", {TextList{"old"}});
  const std::string identifier = deliverWith("", "n-1");
  EXPECT_EQ(store().object("vs_category"), DefaultsValue{(TextList{"old", identifier})});
  EXPECT_EQ(service_.standardDomain->object("vs_category"), DefaultsValue{TextList{"old"}});
  service_.standardDomain->setObject("vs_category", {true});
  deliverWith("", "n-2");
  EXPECT_EQ(service_.standardDomain->object("vs_category"), DefaultsValue{TextList{}})
      << "none was stored there";
}

TEST_F(CategoryTest, AnAnswerThatDoesNotComeInFiveSecondsCostsTheOlderOnes) {
  const std::string older = deliverWith("", "n-1");
  center().holdCategoryAnswers(true);
  const double before = device_->clock->uptime();
  const std::string newer = deliverWith("", "n-2");
  EXPECT_DOUBLE_EQ(device_->clock->uptime() - before, 5);
  EXPECT_EQ(handled_.size(), 2u);
  EXPECT_TRUE(registered(newer));
  EXPECT_FALSE(registered(older));
  EXPECT_EQ(center().answerHeldCategories(), 1u) << "too late, and harmless";
  EXPECT_TRUE(registered(newer));
}

TEST_F(CategoryTest, WhereSuiteAndStandardAreOneTheNewest128AreKept) {
  VorselKellp::install(service_.platform());  // a core without a group
  center().setNotificationCategories({{"app", {}, false}});
  std::vector<std::string> identifiers;
  for (int i = 0; i < 128; ++i) identifiers.push_back(deliverWith("", "n-" + std::to_string(i)));
  std::ranges::rotate(identifiers, identifiers.begin() + 1);
  EXPECT_EQ(deliverWith("", "n-0"), identifiers.back()) << "what comes again is the newest once more";
  EXPECT_EQ(center().categories().size(), 129u);
  for (const char* next : {"n-128", "n-129"}) {
    identifiers.push_back(deliverWith("", next));
    EXPECT_EQ(center().categories().size(), 129u) << next;
  }
  EXPECT_FALSE(registered(identifiers[0]) || registered(identifiers[1]));
  EXPECT_TRUE(registered(identifiers[2]) && registered(identifiers[127]) && registered("app"));
  EXPECT_EQ(service_.standardDomain->object("vs_category"),
            DefaultsValue{(TextList(identifiers.begin() + 2, identifiers.end()))});
  EXPECT_FALSE(store().object("vs_category"));
}

}  // namespace
}  // namespace VorselKelp
