#include "brellixctl/gateway/GatewayCommand.h"

#include <utility>

#include "brellixctl/Answer.h"
#include "brellixctl/EndingSignals.h"
#include "brellixctl/Operations.h"
#include "brellixctl/gateway/ServingGateway.h"
#include "brellixctl/webpush/Arguments.h"
#include "gateway/desktop/Desktops.h"
#include "gateway/devices/DeskDevices.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::Status;

namespace {

Status addDesktops(const GatewayRequest& request, std::vector<std::shared_ptr<gateway::NextHop>>& hops) {
  gateway::DesktopOptions desktops;
  if (!request.vapid.empty()) {
    auto keys = readSenderKeys(request.vapid);
    if (!keys) return keys.error();
    desktops.sender = gateway::Sender{*std::move(keys), request.subject};
  }
  desktops.authorities = request.trust;
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
