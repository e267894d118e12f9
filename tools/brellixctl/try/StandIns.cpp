#include "brellixctl/try/StandIns.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>
#include <string_view>
#include <utility>

namespace brellixctl {

using collection_server::CollectionServer;
using VorselKelp::PayloadLint;
using VorselKelp::Result;

namespace {

/// A connection holds one thread, and one process at a time talks to a stand-in.
constexpr std::size_t threadsEach = 16;

/// At the beginning of a JSON text; its slashes may be escaped. The letters of a host are bounded, for each
/// takes of the stack.
const std::regex& originPattern() {
  static const std::regex pattern(
      R"re("(https?):(?:\\?/){2}([a-z0-9._-]{1,253}(?::[0-9]{1,5})?)(?=["\\/?#]))re", std::regex::icase);
  return pattern;
}

std::vector<std::string> originsOf(const std::string& payload) {
  std::vector<std::string> origins;
  for (std::sregex_iterator found(payload.begin(), payload.end(), originPattern()), end; found != end;
       ++found) {
    auto origin = found->str(1) + "://" + found->str(2);
    if (std::ranges::find(origins, origin) == origins.end()) origins.push_back(std::move(origin));
  }
  return origins;
}

using Paths = std::map<std::string, std::string>;

/// Lets `url`, if it is of this origin, be answered like `kind` and its own path.
void alias(Paths& paths, const std::string& origin, const std::string& url, const char* kind) {
  if (!url.starts_with(origin)) return;
  auto path = url.substr(origin.size(), url.find_first_of("?#", origin.size()) - origin.size());
  if (path.empty()) path = "/";
  if (path.front() != '/') return;
  paths[path] = kind + path;
  // A client may take the dots out before it asks.
  paths[std::filesystem::path(path).lexically_normal().string()] = kind + path;
}

Paths aliasesFor(const std::string& origin, const PayloadLint& lint) {
  Paths paths;
  const auto picture = [&](const std::string& url) { alias(paths, origin, url, "/images"); };
  if (lint.shows.image) picture(*lint.shows.image);
  if (lint.carousel) {
    std::ranges::for_each(lint.carousel->arrowRequests, picture);
    std::ranges::for_each(lint.carousel->requests, picture);
  }
  if (lint.shows.ad && !lint.requests.empty()) alias(paths, origin, lint.requests.back(), "/v1/display");
  return paths;
}

}  // namespace

Result<StandIns> StandIns::start(const std::string& payload, const PayloadLint& lint) {
  StandIns all;
  for (auto& origin : originsOf(payload)) {
    collection_server::ServerOptions options;
    options.threads = threadsEach;
    options.aliases = aliasesFor(origin, lint);
    auto server = CollectionServer::start(std::move(options));
    if (!server) return server.error();
    constexpr std::size_t schemeLength = 4;  // it is http without an s
    auto address = origin.substr(0, schemeLength) + (*server)->url().substr(schemeLength);
    all.standIns_.push_back({std::move(origin), std::move(address), *std::move(server)});
  }
  return all;
}

std::string StandIns::masked(const std::string& payload) const {
  std::string text;
  auto copied = payload.begin();
  for (std::sregex_iterator found(payload.begin(), payload.end(), originPattern()), end; found != end;
       ++found) {
    const auto origin = found->str(1) + "://" + found->str(2);
    const auto standIn = std::ranges::find(standIns_, origin, &StandIn::origin);
    if (standIn == standIns_.end()) continue;
    text.append(copied, (*found)[0].first).append(1, '"').append(standIn->address);
    copied = (*found)[0].second;
  }
  return text.append(copied, payload.end());
}

std::string StandIns::original(std::string text) const {
  for (const auto& [origin, address, server] : standIns_) {
    for (auto at = text.find(address); at != std::string::npos;) {
      const auto behind = at + address.size();
      const bool longer = behind < text.size() && std::isdigit(static_cast<unsigned char>(text[behind])) != 0;
      if (!longer) text.replace(at, address.size(), origin);
      at = text.find(address, longer ? behind : at + origin.size());
    }
  }
  return text;
}

std::map<std::string, std::string> StandIns::addresses() const {
  std::map<std::string, std::string> addresses;
  for (const auto& [origin, address, server] : standIns_) addresses[origin] = address;
  return addresses;
}

}  // namespace brellixctl
