#include "brellixctl/gateway/ServingGateway.h"

#include <sys/resource.h>

#include <cstdio>
#include <optional>
#include <utility>

#include "VorselKelp/JSONAny.h"
#include "brellixctl/gateway/ProviderKeys.h"
#include "brellixctl/gateway/RequestLog.h"
#include "gateway/identity/DeskIdentity.h"

namespace brellixctl {

using VorselKelp::JSONAny;
using VorselKelp::Result;
using VorselKelp::Status;

namespace {

/// What it has of its own, as far as the command line does not give it.
struct OwnParts {
  std::optional<gateway::DeskIdentity> identity;
  bool certificate = false;
  bool providerKey = false;
};

Result<OwnParts> findOwnParts(const GatewayRequest& request) {
  OwnParts own;
  own.certificate = request.certificate.empty();
  own.providerKey = request.providerKeys.empty() && !request.open;
  if (!own.certificate && !own.providerKey) return own;
  const auto folder = gateway::deskIdentityFolder();
  if (!folder) return folder.error();
  auto identity = gateway::deskIdentity(*folder);
  if (!identity) return identity.error();
  own.identity = *std::move(identity);
  return own;
}

Status addKeys(const GatewayRequest& request, const OwnParts& own, gateway::GatewayOptions& options) {
  options.certificate = own.certificate ? own.identity->certificate : request.certificate;
  options.key = own.certificate ? own.identity->key : request.key;
  auto keys = readProviderKeys(request.providerKeys);
  if (!keys) return keys.error();
  options.providerKeys = *std::move(keys);
  if (!own.providerKey) return VorselKelp::Done{};
  auto key =
      readProviderKey(own.identity->providerKeyIdentifier, own.identity->team, own.identity->providerKey);
  if (!key) return key.error();
  options.providerKeys.push_back(*std::move(key));
  return VorselKelp::Done{};
}

Status addLog(const std::string& path, gateway::GatewayOptions& options) {
  if (path.empty()) return VorselKelp::Done{};
  auto log = RequestLog::open(path);
  if (!log) return log.error();
  options.log = [log = *std::move(log)](const gateway::Record& record) { log->write(record); };
  return VorselKelp::Done{};
}

/// Each client is a descriptor.
void allowManyDescriptors() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

JSONAny::Dictionary describeForScripts(const OwnParts& own, const std::string& url, std::uint16_t port) {
  JSONAny::Dictionary json{{"url", url}, {"port", static_cast<std::int64_t>(port)}};
  if (own.certificate) json.push_back({"authority", own.identity->authority});
  if (own.providerKey)
    json.push_back({"providerKey", JSONAny::Dictionary{{"file", own.identity->providerKey},
                                                       {"key", own.identity->providerKeyIdentifier},
                                                       {"team", own.identity->team}}});
  return json;
}

/// How two ordinary clients are pointed at it.
std::string describe(const OwnParts& own, const std::string& url, std::uint16_t port) {
  std::string text = "Gateway at " + url + " (Ctrl-C ends it)\n";
  if (own.certificate) text += "Clients have to trust " + own.identity->authority + '\n';
  if (!own.providerKey) return text;
  const auto file = '"' + own.identity->providerKey + '"';
  const auto key = '"' + own.identity->providerKeyIdentifier + '"';
  const auto team = '"' + own.identity->team + '"';
  const auto number = std::to_string(port);
  text +=
      "\n@parse/node-apn:\n  new apn.Provider({ address: \"localhost\", port: " + number +
      ",\n    token: { key: " + file + ", keyId: " + key + ", teamId: " + team +
      " } })\n\napns2, version 11; later ones know no port but 443:\n  new ApnsClient({ host: \"localhost:" +
      number + "\", team: " + team + ", keyId: " + key + ",\n    signingKey: fs.readFileSync(" + file +
      ") })\n";
  if (own.certificate)
    text += "\nBoth as: NODE_EXTRA_CA_CERTS=\"" + own.identity->authority + "\" node YOUR-SERVER.js\n";
  return text;
}

Result<gateway::GatewayOptions> optionsOf(const GatewayRequest& request, const OwnParts& own) {
  gateway::GatewayOptions options;
  options.port = request.port;
  options.everywhere = !own.certificate && !request.open;
  options.checks = {request.topics, request.open};
  if (const auto status = addKeys(request, own, options); !status) return status.error();
  if (const auto status = addLog(request.log, options); !status) return status.error();
  return options;
}

}  // namespace

Result<std::unique_ptr<ServingGateway>> ServingGateway::start(
    const GatewayRequest& request, std::vector<std::shared_ptr<gateway::NextHop>> hops) {
  const auto own = findOwnParts(request);
  if (!own) return own.error();
  auto options = optionsOf(request, *own);
  if (!options) return options.error();
  options->hops = std::move(hops);
  allowManyDescriptors();
  auto made = gateway::Gateway::make(*std::move(options));
  if (!made) return made.error();
  const auto port = (*made)->port();
  const auto url = "https://localhost:" + std::to_string(port);
  return std::make_unique<ServingGateway>(*std::move(made), describe(*own, url, port),
                                          *JSONAny(describeForScripts(*own, url, port)).encode() + '\n');
}

ServingGateway::ServingGateway(std::unique_ptr<gateway::Gateway> gateway, std::string words, std::string json)
    : gateway_(std::move(gateway)),
      words_(std::move(words)),
      json_(std::move(json)),
      thread_([this] { gateway_->run(); }) {}

ServingGateway::~ServingGateway() {
  gateway_->stop();
  thread_.join();
}

void ServingGateway::introduce(bool json) const {
  std::fputs((json ? json_ : words_).c_str(), stdout);
  std::fflush(stdout);
}

}  // namespace brellixctl
