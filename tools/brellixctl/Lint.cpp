#include <cstdio>

#include "VorselKelp/PayloadLint.h"
#include "VorselKelpSimulator/NotificationRecords.h"
#include "brellixctl/Commands.h"
#include "brellixctl/LintReports.h"
#include "brellixctl/PayloadFile.h"
#include "brellixctl/PlainText.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::PayloadLint;
namespace device = VorselKelp::simulator;

namespace {

int statusFor(const PayloadLint& lint, bool strict) {
  const bool faulty = !lint.errors.empty() || !lint.stops.empty();
  return faulty || (strict && !lint.warnings.empty()) ? 1 : 0;
}

}  // namespace

int runLint(const CommonOptions& common, const LintRequest& request) {
  const auto bytes = readPayload(request.payloadPath);
  if (!bytes) return fail(bytes.error());
  const auto payload = JSONAny::decode(*bytes);
  const auto lint = VorselKelp::lintPayload(*bytes, request.identifier,
                                            device::originalContent(payload ? *payload : JSONAny()));
  if (common.json) {
    std::printf("%s\n", device::encodeLossy(toJSON(lint)).c_str());
  } else {
    printWords(inWords(lint));
  }
  return statusFor(lint, request.strict);
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
