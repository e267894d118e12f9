#include "gateway/Gateway.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <utility>

#include "VorselKelp/JSONAny.h"
#include "gateway/DeviceName.h"
#include "gateway/http2/Server.h"
#include "gateway/provider/Fields.h"

namespace gateway {

using VorselKelp::JSONAny;
using VorselKelp::Result;

namespace {

std::int64_t secondsNow() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

Response responseOf(const Answer& answer, std::string identifier) {
  Response response{answer.status, {{"apns-id", std::move(identifier)}}, {}};
  if (!answer.retryAfter.empty()) response.fields.emplace_back("retry-after", answer.retryAfter);
  if (answer.reason.empty()) return response;
  JSONAny::Dictionary body{{"reason", std::string(answer.reason)}};
  if (answer.timestamp) body.push_back({"timestamp", *answer.timestamp});
  response.fields.emplace_back("content-type", "application/json");
  response.body = *JSONAny(std::move(body)).encode();
  return response;
}

/// Requests by the rules, and to whom they go.
class Reception final : public Server::Requests {
 public:
  explicit Reception(GatewayOptions& options)
      : checker_(std::move(options.checks), ProviderTokens(std::move(options.providerKeys), secondsNow)),
        hops_(std::move(options.hops)),
        log_(std::make_shared<const Log>(std::move(options.log))) {}

  using Log = std::function<void(const Record&)>;

  void requested(Request request, ShownTokens& shown, Server::Respond respond) override {
    const auto began = Loop::Clock::now();
    auto identifier = identifierOf(request);
    auto checked = leaving_ ? Answer{503, "Shutdown"} : checker_.check(std::move(request), shown);
    if (auto* answer = std::get_if<Answer>(&checked)) {
      if (identifier.empty()) identifier = makeIdentifier();
      note(*log_, {identifier, {}, {}, 0, *answer, 0});
      return respond(responseOf(*answer, std::move(identifier)));
    }
    auto notification = std::get<Notification>(std::move(checked));
    if (identifier.empty()) identifier = notification.identifier;
    deliver(std::move(notification), std::move(identifier), began, std::move(respond));
  }

  [[nodiscard]] Response refusal(int status, const Request& request) override {
    auto identifier = identifierOf(request);
    if (identifier.empty()) identifier = makeIdentifier();
    const Answer answer{status, status == 503 ? "ServiceUnavailable" : status == 400 ? "IdleTimeout" : ""};
    note(*log_, {identifier, {}, {}, 0, answer, 0});
    return responseOf(answer, std::move(identifier));
  }

  /// Any thread, and signal handlers: what is read from now on is refused.
  void leave() { leaving_ = true; }

 private:
  void deliver(Notification notification, std::string identifier, Loop::Clock::time_point began,
               Server::Respond respond) {
    const auto hop =
        std::ranges::find_if(hops_, [&](const auto& one) { return one->takes(notification.device); });
    Record record{identifier,
                  *log_ ? nameOf(notification.device) : std::string(),
                  notification.topic,
                  notification.payload.size(),
                  {},
                  0};
    auto answered = [log = log_, record = std::move(record), began, identifier = std::move(identifier),
                     respond = std::move(respond)](const Answer& answer) mutable {
      record.answer = answer;
      record.seconds = std::chrono::duration<double>(Loop::Clock::now() - began).count();
      note(*log, record);
      respond(responseOf(answer, std::move(identifier)));
    };
    if (hop == hops_.end()) return answered({400, "BadDeviceToken"});
    (*hop)->deliver(std::move(notification), std::move(answered));
  }

  static void note(const Log& log, const Record& record) {
    if (log) log(record);
  }

  Checker checker_;
  const std::vector<std::shared_ptr<NextHop>> hops_;
  const std::shared_ptr<const Log> log_;
  std::atomic<bool> leaving_ = false;
};

class RunningGateway final : public Gateway {
 public:
  RunningGateway(GatewayOptions& options, std::shared_ptr<Loop> loop)
      : loop_(std::move(loop)), reception_(options), farewell_(options.limits.farewell) {}

  VorselKelp::Status listen(const GatewayOptions& options) {
    auto tls = Tls::make(options.certificate, options.key);
    if (!tls) return tls.error();
    auto server = Server::listen(loop_, *std::move(tls), reception_,
                                 {options.port, options.everywhere, options.limits});
    if (!server) return server.error();
    server_ = *std::move(server);
    return VorselKelp::Done{};
  }

  [[nodiscard]] std::uint16_t port() const override { return server_->port(); }

  void run() override {
    loop_->run([this] { round(); }, [this] { server_->look(); });
  }

  void stop() override {
    reception_.leave();
    stopping_ = true;
    loop_->wake();
  }

 private:
  void round() {
    if (stopping_ && !leaving_) {
      leaving_ = Loop::Clock::now();
      server_->leave();
      server_->look();
    }
    server_->flush();
    if (leaving_ && (server_->empty() || Loop::Clock::now() - *leaving_ > farewell_)) loop_->stop();
  }

  const std::shared_ptr<Loop> loop_;
  Reception reception_;
  const std::chrono::seconds farewell_;
  std::unique_ptr<Server> server_;
  std::optional<Loop::Clock::time_point> leaving_;
  std::atomic<bool> stopping_ = false;
};

}  // namespace

Result<std::unique_ptr<Gateway>> Gateway::make(GatewayOptions options) {
  auto loop = Loop::make();
  if (!loop) return loop.error();
  auto gateway = std::make_unique<RunningGateway>(options, *std::move(loop));
  if (const auto status = gateway->listen(options); !status) return status.error();
  return std::unique_ptr<Gateway>(std::move(gateway));
}

}  // namespace gateway
