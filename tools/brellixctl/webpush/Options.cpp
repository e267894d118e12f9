#include "brellixctl/webpush/Options.h"

namespace brellixctl {

void addSendOptions(CLI::App& send, SendRequest& request) {
  send.add_option("SUBSCRIPTION", request.subscription,
                  "The receiver's subscription: its text, its hexadecimal digits, or a file")
      ->required();
  send.add_option("PAYLOAD", request.payloadPath, "The payload, a JSON file; - for standard input")
      ->required();
  auto* vapid = send.add_option("--vapid", request.vapid, "The sender's key, in any form, or its file")
                    ->type_name("KEY");
  auto* subject =
      send.add_option("--subject", request.subject, "How to reach the sender: mailto:... or https://...")
          ->type_name("ADDRESS");
  vapid->needs(subject);
  subject->needs(vapid);
  send.add_option("--ttl", request.ttl,
                  "Seconds for which the message waits for its receiver; 0: now or never")
      ->type_name("S")
      ->check(CLI::Range(0, 2'147'483'647))
      ->capture_default_str();
  send.add_option("--urgency", request.urgency, "How soon it is to wake its receiver")
      ->check(CLI::IsMember({"very-low", "low", "normal", "high"}));
  send.add_option("--collapse", request.collapse, "Replaces a waiting message of the same one")
      ->type_name("ID");
}

void addVapidOptions(CLI::App& vapid, VapidRequest& request) {
  vapid.add_option("KEY", request.key,
                   "A private key to show in its other forms, or its file; without one a new one is made");
  vapid
      .add_option("--out", request.out,
                  "Write the private key to this new file, for its owner alone, instead of showing it")
      ->type_name("FILE");
  auto* endpoint =
      vapid.add_option("--endpoint", request.endpoint, "Show the header's value for this address")
          ->type_name("URL");
  auto* subject =
      vapid.add_option("--subject", request.subject, "How to reach the sender: mailto:... or https://...")
          ->type_name("ADDRESS");
  endpoint->needs(subject);
  subject->needs(endpoint);
}

}  // namespace brellixctl
