#pragma once

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "VorselKelp/Result.h"
#include "brellixctl/gateway/GatewayCommand.h"
#include "gateway/Gateway.h"

namespace brellixctl {

/// A gateway that serves on a thread of its own until it goes, with certificate and provider key of its own
/// as far as the request names none.
class ServingGateway {
 public:
  static VorselKelp::Result<std::unique_ptr<ServingGateway>> start(
      const GatewayRequest& request, std::vector<std::shared_ptr<gateway::NextHop>> hops);
  ServingGateway(std::unique_ptr<gateway::Gateway> gateway, std::string words, std::string json);
  ~ServingGateway();
  ServingGateway(const ServingGateway&) = delete;
  ServingGateway& operator=(const ServingGateway&) = delete;

  /// Prints where it is and how ordinary clients are pointed at it; for a script a line of JSON.
  void introduce(bool json) const;

 private:
  const std::unique_ptr<gateway::Gateway> gateway_;
  const std::string words_;
  const std::string json_;
  std::thread thread_;
};

}  // namespace brellixctl
