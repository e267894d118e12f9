#include "brellixctl/gateway/GatewayCommand.h"

#include <sys/resource.h>

#include <cstdio>
#include <optional>
#include <thread>
#include <utility>

#include "brellixctl/Answer.h"
#include "brellixctl/EndingSignals.h"
#include "brellixctl/gateway/ProviderKeys.h"
#include "brellixctl/gateway/RequestLog.h"
#include "brellixctl/webpush/Arguments.h"
#include "gateway/Gateway.h"
#include "gateway/desktop/Desktops.h"
#include "gateway/devices/DeskDevices.h"
#include "gateway/identity/DeskIdentity.h"

namespace brellixctl {

using VorselKelp::Error;
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

Status addDesktops(const GatewayRequest& request, gateway::GatewayOptions& options) {
  gateway::DesktopOptions desktops;
  if (!request.vapid.empty()) {
    auto keys = readSenderKeys(request.vapid);
    if (!keys) return keys.error();
    desktops.sender = gateway::Sender{*std::move(keys), request.subject};
  }
  desktops.authorities = request.trust;
  desktops.loopback = request.localPushServices;
  options.hops.push_back(std::make_shared<gateway::Desktops>(std::move(desktops)));
  return VorselKelp::Done{};
}

Status addDevices(const GatewayRequest& request, gateway::GatewayOptions& options) {
  if (request.homes.size() != request.manifests.size())
    return Error{"Each --home takes an --app of its own", wrongUsage};
  std::vector<phone::Target> targets;
  for (std::size_t i = 0; i < request.homes.size(); ++i) {
    auto target = phone::Target::open(request.homes[i], request.manifests[i]);
    if (!target) return target.error();
    targets.push_back(*std::move(target));
  }
  if (!targets.empty()) options.hops.push_back(std::make_shared<gateway::DeskDevices>(targets));
  return VorselKelp::Done{};
}

Result<gateway::GatewayOptions> optionsOf(const GatewayRequest& request, const OwnParts& own) {
  gateway::GatewayOptions options;
  options.port = request.port;
  options.everywhere = !own.certificate && !request.open;
  options.checks = {request.topics, request.open};
  if (const auto status = addKeys(request, own, options); !status) return status.error();
  if (const auto status = addDesktops(request, options); !status) return status.error();
  if (const auto status = addLog(request.log, options); !status) return status.error();
  if (const auto status = addDevices(request, options); !status) return status.error();
  return options;
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

}  // namespace

int runGateway(const CommonOptions& common, const GatewayRequest& request) {
  const auto own = findOwnParts(request);
  if (!own) return fail(own.error());
  auto options = optionsOf(request, *own);
  if (!options) return fail(options.error());
  allowManyDescriptors();
  const auto signals = holdEndingSignals();
  const auto running = gateway::Gateway::make(*std::move(options));
  if (!running) return fail(running.error());
  const auto port = (*running)->port();
  const auto url = "https://localhost:" + std::to_string(port);
  const auto text =
      common.json ? *JSONAny(describeForScripts(*own, url, port)).encode() + '\n' : describe(*own, url, port);
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
  std::thread serving([&] { (*running)->run(); });
  waitForInterrupt(signals);
  (*running)->stop();
  serving.join();
  return 0;
}

}  // namespace brellixctl
