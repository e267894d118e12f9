#include "brellixctl/Operations.h"
#include "brellixctl/PayloadFile.h"

namespace brellixctl {

VorselKelp::Result<PushOutcome> push(const Target& target, const PushRequest& request) {
  auto payload = readPayload(request.payloadPath);
  if (!payload) return payload.error();
  if (const auto json = decodePayload(*payload, request.payloadPath); !json) return json.error();
  return phone::receive(
      target,
      {.identifier = request.identifier, .payload = *std::move(payload), .timeLimit = request.timeLimit});
}

}  // namespace brellixctl
