#include "brellixctl/gateway/GatewayCommand.h"

namespace brellixctl {

void addGatewayOptions(CLI::App& gateway, GatewayRequest& request) {
  gateway.add_option("--port", request.port, "Port; 0 for any free one")->capture_default_str();
  auto* certificate = gateway
                          .add_option("--certificate", request.certificate,
                                      "Certificate in PEM; without one the gateway makes itself one and is "
                                      "there for this machine alone")
                          ->type_name("FILE");
  auto* key = gateway.add_option("--key", request.key, "The certificate's key")->type_name("FILE");
  certificate->needs(key);
  key->needs(certificate);
  const auto several = [&](const char* name, std::vector<std::string>& values, const char* what,
                           const char* type) {
    return gateway.add_option(name, values, what)->type_name(type)->allow_extra_args(false);
  };
  several("--provider-key", request.providerKeys,
          "Take tokens that are signed with this key; may be repeated; without one the gateway has its own",
          "KEYID=TEAMID=FILE");
  several("--topic", request.topics, "Take notifications for this application alone; may be repeated", "ID");
  several("--home", request.homes, "Folder of a simulated device, with --app; may be repeated", "DIR");
  several("--app", request.manifests, "The application's manifest there", "FILE");
  auto* vapid =
      gateway.add_option("--vapid", request.vapid, "The sender's key towards desktops' push services")
          ->type_name("KEY");
  auto* subject =
      gateway.add_option("--subject", request.subject, "How to reach the sender: mailto:... or https://...")
          ->type_name("ADDRESS");
  vapid->needs(subject);
  subject->needs(vapid);
  gateway.add_option("--trust", request.trust, "Authorities of push services, in PEM; else the system's")
      ->type_name("FILE");
  gateway.add_flag("--local-push-services", request.localPushServices,
                   "Post to push services of this machine too, also by http");
  gateway.add_option("--log", request.log, "Write the answered requests here, one JSON object a line")
      ->type_name("FILE");
  gateway.add_flag("--open", request.open, "Take notifications without a token, from this machine alone");
}

}  // namespace brellixctl
