#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>

#include "VorselKelp/JSONText.h"
#include "brellixctl/Commands.h"
#include "brellixctl/EndingSignals.h"
#include "brellixctl/TextFile.h"
#include "collection_server/CollectionServer.h"

namespace brellixctl {

using collection_server::CollectionServer;
using VorselKelp::Error;
using VorselKelp::Result;

namespace {

Result<std::map<std::string, int>> parseStatuses(const std::vector<std::string>& texts) {
  std::map<std::string, int> statuses;
  for (const auto& text : texts) {
    const auto equals = text.rfind('=');
    int code = 0;
    if (equals != std::string::npos) {
      std::from_chars(text.data() + equals + 1, text.data() + text.size(), code);
    }
    if (text.front() != '/' || code < 100 || code > 599) {
      return Error{"--status takes PATH=CODE, such as /v2/users=500, not \"" + text + "\"", wrongUsage};
    }
    statuses[text.substr(0, equals)] = code;
  }
  return statuses;
}

/// What the server is to answer with.
Result<collection_server::ServerOptions> serverOptions(const ServeOptions& options) {
  auto statuses = parseStatuses(options.statuses);
  if (!statuses) return statuses.error();
  collection_server::ServerOptions server;
  server.port = options.port;
  server.statuses = std::move(*statuses);
  if (!options.document.empty()) {
    auto document = readTextFile(options.document);
    if (!document) return document.error();
    if (const auto json = VorselKelp::readJSONText(*document); !json)
      return Error{options.document + " is no JSON: " + json.error().description};
    server.document = *std::move(document);
  }
  if (!options.script.empty()) {
    auto script = readTextFile(options.script);
    if (!script) return script.error();
    server.script = *std::move(script);
  }
  return server;
}

}  // namespace

int runServe(const CommonOptions& common, const ServeOptions& options) {
  auto server = serverOptions(options);
  if (!server) return fail(server.error());
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> log(nullptr, &std::fclose);
  if (!options.log.empty()) {
    log.reset(std::fopen(options.log.c_str(), "ae"));
    if (log == nullptr) return fail("Cannot write " + options.log + ": " + std::strerror(errno));
  }
  server->received = [sink = log ? log.get() : stdout](const collection_server::ReceivedRequest& request) {
    std::fputs((toJSON(request) + '\n').c_str(), sink);
    std::fflush(sink);
  };
  const auto signals = holdEndingSignals();
  const auto running = CollectionServer::start(*std::move(server));
  if (!running) return fail(running.error());
  if (common.json) {
    std::printf("{\"port\":%d,\"url\":\"%s\"}\n", (*running)->port(), (*running)->url().c_str());
  } else {
    std::printf("Collection server at %s (Ctrl-C ends it)\n", (*running)->url().c_str());
  }
  std::fflush(stdout);
  waitForInterrupt(signals);
  return 0;
}

}  // namespace brellixctl
