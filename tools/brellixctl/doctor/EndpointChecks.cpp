#include <array>
#include <future>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/JSONText.h"
#include "VorselKelpPosix/CurlURLSession.h"
#include "brellixctl/ServerAddress.h"
#include "brellixctl/doctor/Checks.h"

namespace brellixctl {

using VorselKelp::simulator::Manifest;
namespace platform = VorselKelp::platform;

namespace {

constexpr double patience = 10;  // seconds

/// From when a configuration is that a first start asks to have; an older one is not sent to it.
constexpr const char* firstFetchDate = "Fri, 12 Jan 2024 09:42:01 GMT";

// libcurl's numbers.
constexpr int noHandshake = 35;
constexpr int certificateRefused = 60;
constexpr int noHTTP = 1;
constexpr int nothingSent = 52;

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
  if (!endpoint.path.empty()) request.headers = {{"If-Modified-Since", firstFetchDate}};
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
  if (status == 304) {
    return fault("endpoints",
                 "tag: " + url + " is older than " + firstFetchDate +
                     ": a first start is told that nothing has changed, and has no configuration",
                 "Publish it anew, so that its Last-Modified is later");
  }
  if (status < 300) {
    const auto document = VorselKelp::readJSONText(result.body.value_or(""));
    if (document) return fine("endpoints", "tag: " + url + " answers with a document");
    return fault("endpoints",
                 "tag: " + url + " answers with what is no JSON: " + document.error().description,
                 "Publish the remote configuration there; \"{}\" is enough");
  }
  return fault("endpoints", "tag: " + url + " answers with status " + std::to_string(status),
               "Check \"apiKey\": the document is named after it");
}

/// What TLS has to do with a server that could not be asked; absent when it is something else.
std::optional<Finding> tlsFinding(const Endpoint& endpoint, const VorselKelp::Error& error) {
  const bool secure = endpoint.base.starts_with("https://");
  const auto& words = error.description;
  const auto says = [&](const char* part) { return words.find(part) != std::string::npos; };
  if (secure && error.code == certificateRefused && (says("subject name") || says("target"))) {
    return problem(endpoint, endpoint.base + " has a certificate for another name: " + words,
                   "Name the server as its certificate does, or give it one for this name");
  }
  if (secure && error.code == certificateRefused) {
    return problem(endpoint, endpoint.base + " has a certificate that is not trusted: " + words,
                   "Trust an authority of your own: copy its certificate to "
                   "/usr/local/share/ca-certificates/NAME.crt and run update-ca-certificates");
  }
  if (secure && error.code == noHandshake && (says("wrong version") || says("packet length"))) {
    return problem(endpoint, endpoint.base + " speaks plain HTTP: " + words,
                   std::string("Write \"http://\" under \"endpoints\", or let the server speak TLS"));
  }
  if (!secure && (error.code == noHTTP || error.code == nothingSent)) {
    return problem(endpoint, endpoint.base + " answers with what is no HTTP: " + words,
                   "Write \"https://\" if it speaks TLS, or correct the port");
  }
  return std::nullopt;
}

Finding findingOf(const Endpoint& endpoint, const platform::URLResult& result) {
  const std::string name = endpoint.name;
  if (result.error) {
    if (auto tls = tlsFinding(endpoint, *result.error)) return *std::move(tls);
    return problem(endpoint, endpoint.base + " does not answer: " + result.error->description,
                   "Start the server (brellixctl serve), or correct \"" + name +
                       "\" under \"endpoints\"; until then there are no " + endpoint.use);
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
      Endpoint{true, "tag", "remote configurations", bases.tag, "/tag/" + apiKeyOf(manifest) + ".json"},
      Endpoint{manifest.layer == Manifest::Layer::facade, "events", "publisher events", bases.events, {}},
      Endpoint{false, "adFeed", "ads", bases.adFeed, {}},
      Endpoint{false, "script", "permission pages", bases.script, {}}};
  const auto session = VorselKelp::posix::makeURLSession();
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
