#include <array>
#include <future>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelpLinux/CurlURLSession.h"
#include "brellixctl/ServerAddress.h"
#include "brellixctl/doctor/Checks.h"

namespace brellixctl {

using VorselKelp::JSONAny;
using VorselKelp::linux_platform::Manifest;
namespace platform = VorselKelp::platform;

namespace {

constexpr double patience = 10;  // seconds

/// One server, what for, and what it is asked.
struct Endpoint {
  bool needed;  ///< by every application of its layer
  const char* name;
  const char* use;
  std::string base;
  std::string path;
};

std::future<platform::URLResult> ask(platform::URLSession& session, const Endpoint& endpoint) {
  auto answer = std::make_shared<std::promise<platform::URLResult>>();
  auto future = answer->get_future();
  platform::URLRequest request;
  request.url = endpoint.base + endpoint.path;
  request.timeout = patience;
  session.send(std::move(request),
               [answer](platform::URLResult result) { answer->set_value(std::move(result)); });
  return future;
}

/// What is wrong with a server that not every application needs may be none of its business.
Finding problem(const Endpoint& endpoint, std::string what, std::string mend) {
  auto* kind = endpoint.needed ? &fault : &notice;
  return kind("endpoints", endpoint.name + (": " + std::move(what)), std::move(mend));
}

bool leadsNowhere(const std::string& base) {
  const auto end = base.find_first_of(":/", base.find("://") + 3);
  return base.substr(0, end).ends_with(".example");
}

/// The document counts only when it can be read; a server without one leaves everything as it is.
Finding configurationFinding(const Endpoint& endpoint, const platform::URLResult& result) {
  const int status = result.response->statusCode;
  const auto url = endpoint.base + endpoint.path;
  if (status == 304 || (status < 300 && result.body && JSONAny::decode(*result.body).ok())) {
    return fine("endpoints", "tag: " + url + " answers with a document");
  }
  if (status < 300) {
    return fault("endpoints", "tag: " + url + " answers with something that is no JSON",
                 "Publish the remote configuration there; \"{}\" is enough");
  }
  return fault("endpoints", "tag: " + url + " answers with status " + std::to_string(status),
               "Check \"apiKey\": the document is named after it");
}

Finding findingOf(const Endpoint& endpoint, const platform::URLResult& result) {
  const std::string name = endpoint.name;
  if (result.error) {
    return problem(endpoint, endpoint.base + " does not answer: " + result.error->description,
                   "Start the server (brellixctl serve), or correct \"" + name +
                       "\" under \"endpoints\"; until then there are " + "no " + endpoint.use);
  }
  if (!endpoint.path.empty()) return configurationFinding(endpoint, result);
  return fine("endpoints", name + ": " + endpoint.base + " answers");
}

/// What can be told without asking; absent when the server has to be asked.
std::optional<Finding> unaskedFinding(const Endpoint& endpoint) {
  const std::string name = endpoint.name;
  if (!isServerAddress(endpoint.base)) {
    return problem(endpoint, "\"" + endpoint.base + "\" is no scheme and host",
                   "Write it like \"https://collect.your.domain\", without a path");
  }
  if (leadsNowhere(endpoint.base)) {
    return problem(endpoint, endpoint.base + " leads nowhere, so there are no " + endpoint.use,
                   "Name your server as \"" + name + "\" under \"endpoints\"");
  }
  return std::nullopt;
}

}  // namespace

Findings checkEndpoints(const Manifest& manifest) {
  const auto& bases = manifest.endpoints;
  const std::array endpoints{
      Endpoint{true, "collection", "registrations and activity reports", bases.collection, {}},
      Endpoint{true, "tag", "remote configurations", bases.tag,
               "/tag/" + manifest.apiKey.value_or("") + ".json"},
      Endpoint{manifest.layer == Manifest::Layer::facade, "events", "publisher events", bases.events, {}},
      Endpoint{false, "adFeed", "ads", bases.adFeed, {}},
      Endpoint{false, "script", "permission pages", bases.script, {}}};
  const auto session = VorselKelp::linux_platform::makeURLSession();
  std::array<std::future<platform::URLResult>, endpoints.size()> answers;
  for (std::size_t i = 0; i < endpoints.size(); ++i) {
    if (!unaskedFinding(endpoints[i])) answers[i] = ask(*session, endpoints[i]);
  }
  Findings findings;
  for (std::size_t i = 0; i < endpoints.size(); ++i) {
    findings.push_back(answers[i].valid() ? findingOf(endpoints[i], answers[i].get())
                                          : *unaskedFinding(endpoints[i]));
  }
  return findings;
}

}  // namespace brellixctl
