#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "push/ServiceTest.h"

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing_platform::pngBeginning;
using testing_platform::ServerAnswer;

TEST_F(ServiceTest, AnAdOnlyPushStoresWhatItSays) {
  struct Case {
    const char* members;
    std::optional<bool> adex;
    std::optional<std::string> endpoint;
    std::vector<std::string> requests;
  };
  const Case cases[] = {
      {"", {}, {}, {}},
      {R"(,"adex":true)", true, {}, {}},
      {R"(,"adex":false)", false, {}, {}},
      {R"(,"v":"https://v/","t":["https://t/"])", {}, {}, {"https://v/"}},
      {R"(,"e":"https://e/?a=b")", {}, "https://e/?a=b", {"https://e/?a=b&ver=2.0.0"}},
      {R"(,"adex":true,"e":"https://no host")", true, "https://no host", {}},
  };
  for (const auto& c : cases) {
    store().removeObject("vs_adex");
    store().removeObject("vs_eEndpoint");
    const auto before = service_.urlSession->urls().size();
    const auto best = deliver(message(c.members));
    service_.settle();
    EXPECT_EQ(stored<bool>("vs_adex"), c.adex) << c.members;
    EXPECT_EQ(text("vs_eEndpoint"), c.endpoint) << c.members;
    auto urls = service_.urlSession->urls();
    urls.erase(urls.begin(), urls.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_EQ(urls, c.requests) << c.members;
    EXPECT_EQ(best->title, "as sent");
  }
  EXPECT_THAT(handled_, IsEmpty()) << "the time limit ends these";
  EXPECT_THAT(device_->notificationCenter->categories(), IsEmpty());
}

TEST_F(ServiceTest, TheAdBecomesTheContentOnce) {
  struct Case {
    std::string title;
    ServerAnswer answer;
    const char* shown;
  };
  const Case cases[] = {
      {"T", status(200, R"({"items":[{"md":{"title":"Ad"}},{"md":{"title":"Second"}}]})"), "Ad"},
      {"T", status(200, R"({"items":[{"md":{"title":"Ad","img":"https://no host"}}]})"), "Ad"},
      {"T", status(200, R"({"items":[{"md":{}}]})"), "T"},
      {"T", status(200, R"({"items":[]})"), "T"},
      {"T", status(200, "{}"), "T"},
      {"T", status(200, "<html>"), "T"},
      {"T", status(204), "T"},
      {"T", ServerAnswer::failure("down"), "T"},
      {"Caf\\\\u00e9", status(200, "{}"), "Caf\u00e9"},
      {"", status(200, "{}"), "No title"},
      {"T", status(200, R"({"items":[{"md":{"title":""}}]})"), "No title"},
  };
  for (const auto& c : cases) {
    handled_.clear();
    const auto best = deliver(R"({"aps":{"alert":{"title":")" + c.title + R"(","e":"https://e/ad"}}})");
    service_.urlSession->setRule("/ad&ver=2.0.0", c.answer);
    service_.settle();
    ASSERT_THAT(handled_, ElementsAre(best)) << c.answer.body;
    EXPECT_EQ(best->title, c.shown) << c.answer.body;
    EXPECT_THAT(best->attachments, IsEmpty());
  }
  handled_.clear();
  const auto best = deliver(message(R"(,"e":"https://e/ad")"));
  service_.urlSession->setRule("/ad&ver=2.0.0", status(200, R"({"items":[{"md":{"img":"https://i/x"}}]})"));
  service_.urlSession->setRule("/x", status(200, pngBeginning(1, 1)));
  service_.settle();
  EXPECT_THAT(handled_, ElementsAre(best));
  EXPECT_EQ(best->attachments.size(), 1u);
}

}  // namespace
}  // namespace VorselKelp
