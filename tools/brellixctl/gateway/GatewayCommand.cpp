#include "brellixctl/gateway/GatewayCommand.h"

#include <utility>

#include "brellixctl/Answer.h"
#include "brellixctl/EndingSignals.h"
#include "brellixctl/Operations.h"
#include "brellixctl/TextFile.h"
#include "brellixctl/gateway/ServingGateway.h"
#include "brellixctl/webpush/Arguments.h"
#include "gateway/desktop/Desktops.h"
#include "gateway/devices/DeskDevices.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::Result;
using VorselKelp::Status;

namespace {

// What is wrong with these would be found out by each notification anew.

Result<gateway::Sender> readSender(const std::string& vapid, const std::string& subject) {
  auto keys = readSenderKeys(vapid);
  if (!keys) return keys.error();
  const auto tried = authorizationFor(*keys, "https://localhost", subject);
  if (!tried) return tried.error();
  return gateway::Sender{*std::move(keys), subject};
}

Status checkAuthorities(const std::string& file) {
  const auto text = readTextFile(file);
  if (!text) return text.error();
  if (text->find(" CERTIFICATE-----") == std::string::npos) return Error{file + " holds no certificate"};
  return VorselKelp::Done{};
}

Status addDesktops(const GatewayRequest& request, std::vector<std::shared_ptr<gateway::NextHop>>& hops) {
  gateway::DesktopOptions desktops;
  if (!request.vapid.empty()) {
    auto sender = readSender(request.vapid, request.subject);
    if (!sender) return sender.error();
    desktops.sender = *std::move(sender);
  }
  if (!request.trust.empty()) {
    if (const auto status = checkAuthorities(request.trust); !status) return status.error();
    desktops.authorities = request.trust;
  }
  desktops.loopback = request.localPushServices;
  hops.push_back(std::make_shared<gateway::Desktops>(std::move(desktops)));
  return VorselKelp::Done{};
}

Status addDevices(const GatewayRequest& request, std::vector<std::shared_ptr<gateway::NextHop>>& hops) {
  if (request.homes.size() != request.manifests.size())
    return Error{"Each --home takes an --app of its own", wrongUsage};
  std::vector<phone::Target> targets;
  for (std::size_t i = 0; i < request.homes.size(); ++i) {
    auto target = phone::Target::open(request.homes[i], request.manifests[i]);
    if (!target) return target.error();
    targets.push_back(*std::move(target));
  }
  if (!targets.empty()) hops.push_back(std::make_shared<gateway::DeskDevices>(targets));
  return VorselKelp::Done{};
}

}  // namespace

int runGateway(const CommonOptions& common, const GatewayRequest& request) {
  std::vector<std::shared_ptr<gateway::NextHop>> hops;
  if (const auto status = addDesktops(request, hops); !status) return fail(status.error());
  if (const auto status = addDevices(request, hops); !status) return fail(status.error());
  const auto signals = holdEndingSignals();
  const auto serving = ServingGateway::start(request, std::move(hops));
  if (!serving) return fail(serving.error());
  (*serving)->introduce(common.json);
  waitForInterrupt(signals);
  return 0;
}

}  // namespace brellixctl
