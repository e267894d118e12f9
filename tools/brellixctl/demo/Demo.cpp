#include <cerrno>
#include <cstring>
#include <fstream>

#include "brellixctl/Commands.h"
#include "brellixctl/PlainText.h"
#include "brellixctl/demo/DemoFiles.h"
#include "brellixctl/demo/Journey.h"
#include "brellixctl/demo/ReportPage.h"
#include "collection_server/CollectionServer.h"

namespace brellixctl {

using collection_server::CollectionServer;
using VorselKelp::Error;
using VorselKelp::Result;

namespace {

/// A report without pictures is better than none; windows that were asked for are not.
Result<std::shared_ptr<Display>> displayFor(const DemoRequest& request) {
  if (!request.screens && request.report.empty()) return std::shared_ptr<Display>();
  auto display = Display::find();
  if (display || request.screens) return display;
  printErrorLine("brellixctl: the report has no pictures of screens. " + display.error().description);
  return std::shared_ptr<Display>();
}

VorselKelp::Status writeReport(const std::string& path, const JourneyRecord& record) {
  std::ofstream file(path, std::ios::binary);
  file << reportPage(record.happenings());
  file.close();
  if (!file) return Error{"Cannot write " + path + ": " + std::strerror(errno)};
  return VorselKelp::Done{};
}

}  // namespace

int runDemo(const CommonOptions& common, const DemoRequest& request) {
  const TemporaryFolder folder;
  if (folder.path().empty()) return fail("Cannot make a folder for the demonstration's device");
  auto display = displayFor(request);
  if (!display) return fail(display.error());
  RequestWatch watch;
  JourneyRecord record;
  collection_server::ServerOptions options;
  options.document = collection_server::promptingConfiguration();
  options.received = [&](const collection_server::ReceivedRequest& received) {
    watch.note(received);
    record.noteRequest(received);
  };
  const auto server = CollectionServer::start(std::move(options));
  if (!server) return fail(server.error());
  watch.setServer((*server)->url());
  const auto home = folder.path() + "/device";
  auto target = Target::open(home, folder.write("news.json", demoManifest(watch.server(), "core")));
  if (!target) return fail(target.error());
  auto facade = Target::open(home, folder.write("facade.json", demoManifest(watch.server(), "facade")));
  if (!facade) return fail(facade.error());
  JourneyPlan plan{*std::move(target),
                   *std::move(facade),
                   folder.write("storm.json", demoPush(watch.server())),
                   folder.write("stories.json", demoCarousel(watch.server())),
                   *std::move(display),
                   folder.path(),
                   common.json};
  const bool done = Journey(std::move(plan), watch, record).run();
  if (!request.report.empty()) {
    if (const auto written = writeReport(request.report, record); !written) return fail(written.error());
    if (!common.json) printWords("The report is in " + plainText(request.report) + "\n");
  }
  return done ? 0 : 1;
}

}  // namespace brellixctl
