#include <fstream>
#include <regex>

#include "VorselKelp/InterstitialAD.h"
#include "facade/FacadeTest.h"

namespace BrellixPush {
namespace {

using testing::IsEmpty;
using VorselKelp::status;
using VorselKelp::VorselKellp;
using VorselKelp::platform::URLRequest;

/// One row of the table in docs/servers.md.
struct Row {
  std::string name;
  std::regex line;     ///< method and URL
  std::string header;  ///< empty for none
  bool hasBody = false;
  bool met = false;
};

std::regex patternOf(std::string line) {
  const VorselKelp::platform::Endpoints servers;
  const std::pair<const char*, std::string> names[] = {{"{tag}", servers.tag},
                                                       {"{collection}", servers.collection},
                                                       {"{adFeed}", servers.adFeed},
                                                       {"{events}", servers.events}};
  for (const auto& [name, value] : names) {
    if (const auto at = line.find(name); at != std::string::npos)
      line.replace(at, std::string(name).size(), value);
  }
  line = std::regex_replace(line, std::regex(R"([.?+*()\[\]^$|])"), R"(\$&)");
  return std::regex(std::regex_replace(line, std::regex(R"(\{[a-z]+\})"), "[^ ]+"));
}

std::vector<Row> documentedRequests() {
  std::ifstream file(DOCUMENTS "/servers.md");
  const std::regex row(R"(\| ([^|]+) \| `([^`]+)` \| `?([^|`]+)`? \| ([^|]+) \| [^|]+ \|)");
  std::vector<Row> rows;
  for (std::string line; std::getline(file, line);) {
    if (std::smatch found; std::regex_match(line, found, row)) {
      std::string header = found[3];
      if (header.starts_with("If-Modified-Since"))
        header = "If-Modified-Since: Fri, 12 Jan 2024 09:42:01 GMT";
      rows.push_back({found[1], patternOf(found[2]), header == "none" ? "" : header, found[4] != "none"});
    }
  }
  return rows;
}

bool fits(const Row& row, const URLRequest& request) {
  const std::string header =
      request.headers.empty() ? "" : request.headers[0].name + ": " + request.headers[0].value;
  return request.headers.size() < 2 && header == row.header && row.hasBody == !request.body.empty() &&
         std::regex_match(request.method + " " + request.url, row.line);
}

class ServersDocumentTest : public FacadeTest {
 protected:
  /// Everything for which the library asks a server.
  void requestEverything() {
    app_.bundle->setMain("VorselKellpTrackID", "feed-7");
    app_.urlSession->setRule("*",
                             status(201, R"({"items":[{"md":{"l2":"s","cpm_t":["https://cpm/${l2}"]}}]})"));
    startFacade();
    BrellixPushSDK::initialize("publisher", "source");
    BrellixPushSDK::askForNotificationsPermission();
    app_.settle();
    const std::uint8_t token[] = {1};
    BrellixPushSDK::registerDeviceToken(token);
    push(R"({"aps":{"mutable-content":1,"alert":{"title":"T","v":"https://view/1",
             "n":{"image":"https://i/1.png"}}}})");
    push(R"({"aps":{"mutable-content":1,"alert":{"title":"T","e":"https://feed/ad?a=1"}}})");
    app_.urlSession->setRule("/v1/display/feed-7",
                             status(200, R"({"items":[{"md":{"l2":"s","cpm_t":["https://cpm/${l2}"]}}]})"));
    const auto ad = VorselKelp::InterstitialAD::create("slot");
    app_.settle();
  }
  void push(const std::string& payload) {
    VorselKelp::platform::NotificationRequest request;
    request.content.userInfo = VorselKelp::platform::UserInfo::fromJSON(payload);
    VorselKellp::didReceiveNotification(
        request, std::make_shared<VorselKelp::platform::NotificationContent>(), [](const auto&) {});
    app_.settle();
  }
};

TEST_F(ServersDocumentTest, TellsEveryRequest) {
  auto rows = documentedRequests();
  ASSERT_EQ(rows.size(), 9u);
  requestEverything();
  for (const auto& request : app_.urlSession->requests()) {
    bool told = false;
    for (Row& row : rows) {
      if (!fits(row, request)) continue;
      row.met = told = true;
    }
    EXPECT_TRUE(told) << request.method << " " << request.url;
  }
  for (const Row& row : rows) EXPECT_TRUE(row.met) << row.name;
}

}  // namespace
}  // namespace BrellixPush
