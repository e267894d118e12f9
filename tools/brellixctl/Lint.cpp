#include <cstdio>

#include "VorselKelp/PayloadLint.h"
#include "VorselKelpSystem/RemoteNotification.h"
#include "brellixctl/Commands.h"
#include "brellixctl/LintReports.h"
#include "brellixctl/PayloadFile.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::PayloadLint;
namespace system = VorselKelp::system;

namespace {

/// The first thing that is wrong; empty where the payload will do.
std::string failureOf(const PayloadLint& lint, bool strict) {
  if (!lint.errors.empty()) return lint.errors.front();
  if (!lint.stops.empty()) return lint.stops.front().text;
  return strict && !lint.warnings.empty() ? lint.warnings.front() : "";
}

}  // namespace

int runLint(const LintRequest& request) {
  const auto bytes = readPayload(request.payloadPath);
  if (!bytes) return fail(bytes.error());
  const auto payload = JSONAny::decode(*bytes);
  const auto lint = VorselKelp::lintPayload(*bytes, request.identifier,
                                            system::unchangedContent(payload ? *payload : JSONAny()));
  return answer(toJSON(lint), inWords(lint), failureOf(lint, request.strict));
}

int runSchema(const std::string& name) {
  const auto schema = VorselKelp::payloadSchema(name);
  if (!schema) {
    return fail(Error{
        "There is no schema \"" + name + "\"; there are: push, campaign, activity, users, configuration, ad",
        wrongUsage});
  }
  std::printf("%s\n", schema->c_str());
  return 0;
}

}  // namespace brellixctl
