#include <gmock/gmock.h>
#include <sys/stat.h>

#include <mutex>

#include "VorselKelpPosix/Hex.h"
#include "VorselKelpWebPush/Base64Url.h"
#include "VorselKelpWebPush/Message.h"
#include "VorselKelpWebPush/Request.h"
#include "posix/net/RunningServer.h"
#include "tools/ToolFixture.h"

namespace VorselKelp::tool_tests {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* subject = "mailto:a@b.example";

/// Commands that need no device, and a push service on this machine.
class SendTest : public ToolTest {
 protected:
  SendTest() {
    service_.Post(".*", [this](const httplib::Request& request, httplib::Response& response) {
      const std::lock_guard lock(mutex_);
      received_.push_back(request);
      answer(request.path, response);
    });
    running_ = std::make_unique<testing_support::Running>(service_);
    std::ofstream(folder_ / "payload.json") << payload_;
  }

  static void answer(const std::string& path, httplib::Response& response) {
    response.status = std::stoi(path.substr(1));
    if (path == "/307") response.set_header("Location", "/201");
    if (path == "/429/wait") response.set_header("Retry-After", "30");
    if (path == "/400") response.set_content("no such\nkey \x1b[31m" + std::string(1000, 'x'), "text/plain");
    if (path == "/200/flood") response.set_content(std::string(1 << 20, 'x'), "text/plain");
  }

  [[nodiscard]] std::string subscription(const std::string& path) const {
    return webpush::subscriptionText({running_->url(path), keys_.auth, keys_.publicKey});
  }

  Finished bare(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), BRELLIXCTL);
    ToolRun process(arguments, folder_ / "errors");
    Finished finished;
    finished.output = process.readAll();
    finished.status = process.wait();
    finished.errors = errorText();
    return finished;
  }
  Finished send(const std::string& path, std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"send", subscription(path), folder_ / "payload.json"});
    return bare(std::move(options));
  }
  std::vector<httplib::Request> received() {
    const std::lock_guard lock(mutex_);
    return std::exchange(received_, {});
  }

  const std::string payload_ = R"({"aps": {"alert": "Storm"}})";
  const webpush::ReceiverKeys keys_ = *webpush::makeReceiverKeys();
  httplib::Server service_;
  std::unique_ptr<testing_support::Running> running_;
  std::mutex mutex_;
  std::vector<httplib::Request> received_;
};

TEST_F(SendTest, ThePushServiceGetsWhatItAsksForAndTheReceiverThePayload) {
  const auto plain = send("/201");
  EXPECT_EQ(plain.status, 0) << plain.errors;
  EXPECT_EQ(plain.output, "The push service has accepted the message (201).\n");
  ASSERT_EQ(bare({"vapid", "--out", folder_ / "key.pem"}).status, 0);
  const auto full = send("/201", {"--vapid", folder_ / "key.pem", "--subject", subject, "--ttl", "0",
                                  "--urgency", "high", "--collapse", "storm", "--json"});
  EXPECT_EQ(full.status, 0) << full.errors;
  EXPECT_EQ(full.output, "{\"status\":201,\"accepted\":true}\n");

  const auto requests = received();
  ASSERT_EQ(requests.size(), 2U);
  for (const auto& request : requests) {
    EXPECT_EQ(request.get_header_value("Content-Encoding"), "aes128gcm");
    EXPECT_EQ(*webpush::decrypt(request.body, keys_), payload_);
  }
  EXPECT_EQ(requests[0].get_header_value("TTL"), "604800");
  for (const char* name : {"Urgency", "Topic", "Authorization"})
    EXPECT_FALSE(requests[0].has_header(name)) << name;
  EXPECT_EQ(requests[1].get_header_value("TTL"), "0");
  EXPECT_EQ(requests[1].get_header_value("Urgency"), "high");
  EXPECT_EQ(requests[1].get_header_value("Topic"), webpush::topicOf("storm"));
  const auto shown = bare({"vapid", folder_ / "key.pem", "--json"}).json();
  EXPECT_THAT(requests[1].get_header_value("Authorization"),
              AllOf(StartsWith("vapid t="), testing::EndsWith(", k=" + at(shown, "publicKey"))));
}

TEST_F(SendTest, SaysInALineWhatTheServiceAnswered) {
  struct Case {
    const char* path;
    std::string words;
  };
  const std::vector<Case> cases{
      {"/404", "The subscription is gone (404)"},
      {"/410", "The subscription is gone (410)"},
      {"/413", "too large for this push service (413)"},
      {"/429", "too many messages (429): try again later"},
      {"/429/wait", "too many messages (429): try again after 30 s"},
      {"/307", "did not take the message (307)\n"},
      {"/400", R"(did not take the message (400): no such\x0Akey \x1B[31mxxx)"},
      {"/200/flood", "larger than 65536 bytes"},
  };
  for (const auto& [path, words] : cases) {
    const auto run = send(path);
    EXPECT_EQ(run.status, 1) << path;
    EXPECT_THAT(run.errors, AllOf(StartsWith("brellixctl: "), HasSubstr(words)));
    EXPECT_EQ(std::ranges::count(run.errors, '\n'), 1);
    EXPECT_LT(run.errors.size(), 400U);
    EXPECT_EQ(received().size(), 1U) << path << ": no redirect is followed";
  }
  const auto json = send("/429/wait", {"--json"}).json();
  EXPECT_EQ(at(json, "status") + at(json, "accepted") + at(json, "retryAfter"), "429false30");
  EXPECT_THAT(at(json, "error"), HasSubstr("(429)"));
  running_.reset();
  const webpush::Subscription closed{"http://127.0.0.1:9/x", keys_.auth, keys_.publicKey};
  const auto unanswered = bare({"send", webpush::subscriptionText(closed), folder_ / "payload.json"});
  EXPECT_EQ(unanswered.status, 1);
  EXPECT_THAT(unanswered.errors, HasSubstr("does not answer"));
}

TEST_F(SendTest, TakesSubscriptionsInEveryFormAndSendsNothingThatIsWrong) {
  std::ofstream(folder_ / "text") << subscription("/201") << '\n';
  std::ofstream(folder_ / "digits") << posix::hexOf(subscription("/201"));
  for (const auto& form :
       {subscription("/201"), posix::hexOf(subscription("/201")), folder_ / "text", folder_ / "digits"}) {
    EXPECT_EQ(bare({"send", form, folder_ / "payload.json"}).status, 0) << errorText();
  }
  EXPECT_EQ(received().size(), 4U);

  const auto text = subscription("/201");
  auto elsewhere = text;
  elsewhere.replace(elsewhere.find("127.0.0.1"), 9, "192.0.2.1");
  std::ofstream(folder_ / "large.json") << R"({"text": ")" << std::string(3993 - 11, 'x') << "\"}";
  std::ofstream(folder_ / "list.json") << "[]";
  const auto good = folder_ / "payload.json";
  struct Case {
    std::vector<std::string> arguments;
    int status;
    std::string words;
  };
  const std::vector<Case> cases{
      {{text, folder_ / "large.json"}, 1, "has 3994 bytes; push services take 3993 at most"},
      {{text, folder_ / "list.json"}, 1, "is no JSON object"},
      {{text, folder_ / "text.json"}, 1, "No such file"},
      {{folder_ / "none", good}, 1, "No such file"},
      {{"{}", good}, 1, "no text \"endpoint\""},
      {{elsewhere, good}, 1, "http address, which is for this machine alone"},
      {{text, good, "--vapid", "x", "--subject", subject}, 1, "none itself"},
      {{text, good, "--vapid", folder_ / "list.json", "--subject", subject}, 1, "holds no sender's key"},
      {{text, good, "--vapid", "x"}, 2, "--subject"},
      {{text, good, "--urgency", "urgent"}, 2, "urgent"},
      {{text, good, "--ttl", "-1"}, 2, "-1"},
      {{text}, 2, "PAYLOAD"},
  };
  for (auto [arguments, status, words] : cases) {
    arguments.insert(arguments.begin(), "send");
    const auto run = bare(arguments);
    EXPECT_EQ(run.status, status) << words;
    EXPECT_THAT(run.errors, HasSubstr(words));
  }
  EXPECT_THAT(received(), IsEmpty());
}

TEST_F(SendTest, AGatewayDoesNotStartWithWhatNothingCouldBeSentWith) {
  const auto key = folder_ / "key.pem";
  EXPECT_EQ(bare({"vapid", "--out", key}).status, 0);
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"--vapid", folder_ / "none", "--subject", subject}, "none itself"},
      {{"--vapid", key, "--subject", "push.example"}, "neither a mailto:"},
      {{"--trust", folder_ / "none"}, "No such file"},
      {{"--trust", key}, "holds no certificate"},
  };
  for (auto [arguments, words] : cases) {
    arguments.insert(arguments.begin(), {"gateway", "--port", "0"});
    const auto run = bare(arguments);
    EXPECT_EQ(run.status, 1) << words;
    EXPECT_THAT(run.errors, HasSubstr(words));
  }
}

TEST_F(SendTest, ASendersKeyIsKeptToItselfAndNeverReplaced) {
  const auto file = folder_ / "key.pem";
  const auto made = bare({"vapid", "--out", file});
  EXPECT_EQ(made.status, 0) << made.errors;
  struct stat status {};
  ASSERT_EQ(::stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  const auto again = bare({"vapid", "--out", file});
  EXPECT_EQ(again.status, 1);
  EXPECT_THAT(again.errors, HasSubstr("File exists"));

  const auto shown = bare({"vapid", file, "--json"}).json();
  EXPECT_EQ(made.output, "Public key:  " + at(shown, "publicKey") + "\nPrivate key: in " + file + '\n');
  std::ostringstream pem;
  pem << std::ifstream(file).rdbuf();
  EXPECT_EQ(at(shown, "pem"), pem.str());
  EXPECT_EQ(webpush::fromBase64Url(at(shown, "privateKey"))->size(), 32U);
  const auto words = bare(
      {"vapid", "--endpoint", "https://push.example/1", "--subject", subject, "--", at(shown, "privateKey")});
  EXPECT_THAT(words.output, AllOf(HasSubstr("Public key:  " + at(shown, "publicKey")),
                                  HasSubstr("Authorization: vapid t="), HasSubstr(pem.str())));
  EXPECT_EQ(bare({"vapid", "--endpoint", "https://push.example/1"}).status, 2);
  EXPECT_EQ(bare({"vapid", "--endpoint", "push.example", "--subject", subject}).status, 1);
}

}  // namespace
}  // namespace VorselKelp::tool_tests
