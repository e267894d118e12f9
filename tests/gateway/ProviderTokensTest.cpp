#include "gateway/provider/ProviderTokens.h"

#include <gmock/gmock.h>

#include "gateway/ProviderToken.h"

namespace gateway {
namespace {

class ProviderTokensTest : public testing::Test {
 protected:
  std::string check(const std::string& authorization) {
    const auto answer = tokens.check(&authorization, shown);
    return answer ? std::to_string(answer->status) + " " + std::string(answer->reason) : "good";
  }
  std::string checkAnew(const std::string& authorization) {
    shown = {};
    return check(authorization);
  }

  std::int64_t now = 1'800'000'000;
  const Provider first{"KEY1"};
  const Provider second{"KEY2"};
  const Provider stranger{"KEY1"};
  ProviderTokens tokens{{first.key(), second.key()}, [this] { return now; }};
  ShownTokens shown;
};

TEST_F(ProviderTokensTest, TakesWhatItsKeysHaveSignedForAnHour) {
  EXPECT_EQ(tokens.check(nullptr, shown)->reason, "MissingProviderToken");
  const auto token = first.bearer(now - 3600);
  EXPECT_EQ(check(token), "good");
  EXPECT_EQ(check("BEARER" + token.substr(6)), "good") << "the scheme in any case";
  now += 1;
  EXPECT_EQ(check(token), "403 ExpiredProviderToken") << "also of a token that was good";
  EXPECT_EQ(checkAnew(token), "403 ExpiredProviderToken");
  EXPECT_EQ(checkAnew(first.bearer(now + 300)), "good") << "clocks differ";
  EXPECT_EQ(checkAnew(first.bearer(now + 301)), "403 InvalidProviderToken");
}

TEST_F(ProviderTokensTest, TakesNothingElse) {
  const auto header = std::string(R"({"alg":"ES256","kid":"KEY1"})");
  const auto claims = R"({"iss":"TEAM","iat":)" + std::to_string(now) + "}";
  const auto good = first.sign(header, claims);
  ASSERT_EQ(checkAnew("bearer " + good), "good");
  auto otherClaims = first.sign(header, R"({"iss":"TEAM","iat":)" + std::to_string(now - 1) + "}");
  otherClaims.replace(otherClaims.rfind('.'), std::string::npos, good.substr(good.rfind('.')));
  for (const auto& token :
       {stranger.bearer(now).substr(7), otherClaims, good.substr(0, good.size() - 2), good + "AA", "." + good,
        first.sign(R"({"alg":"none","kid":"KEY1"})", claims), first.sign(R"({"alg":"ES256"})", claims),
        first.sign(R"({"alg":"ES256","kid":"KEY2"})", claims),
        first.sign(header, R"({"iss":"OTHER","iat":)" + std::to_string(now) + "}"),
        first.sign(header, R"({"iss":"TEAM"})"),
        first.sign(header, R"({"iss":"TEAM","iat":-9223372036854775808})"), first.sign("[]", claims),
        std::string("a.b.c"), std::string(".."), std::string(), std::string(100'000, 'a')}) {
    EXPECT_EQ(checkAnew("bearer " + token), "403 InvalidProviderToken") << token.substr(0, 300);
  }
  EXPECT_EQ(checkAnew("basic " + good), "403 InvalidProviderToken");
}

TEST_F(ProviderTokensTest, HoldsAConnectionToItsKeyAndToPatience) {
  EXPECT_EQ(check(first.bearer(now - 1200)), "good");
  EXPECT_EQ(check(second.bearer(now)), "403 UnrelatedKeyIdInToken");
  const auto later = first.bearer(now);
  EXPECT_EQ(check(later), "good");
  EXPECT_EQ(check(first.bearer(now + 1)), "429 TooManyProviderTokenUpdates");
  EXPECT_EQ(check(later), "good") << "the last one goes on";
}

}  // namespace
}  // namespace gateway
