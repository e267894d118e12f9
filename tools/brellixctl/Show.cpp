#include <filesystem>

#include "brellixctl/Operations.h"
#include "brellixctl/TargetProcess.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::Result;

namespace {

Result<std::shared_ptr<Display>> displayFor(const ShowRequest& request) {
  if (request.window) return Display::users();
  if (request.display || request.png.empty()) return request.display;
  return Display::find();
}

/// Before anything happens: a picture that can't be written is no reason to have sent trackers.
VorselKelp::Status checkFolderOf(const std::string& file) {
  const auto folder = std::filesystem::path(file).parent_path();
  std::error_code error;
  if (folder.empty() || std::filesystem::is_directory(folder, error)) return VorselKelp::Done{};
  return Error{"There is no folder " + folder.string() + " to write the picture into"};
}

}  // namespace

Result<ShowOutcome> show(const Target& target, const ShowRequest& request) {
  auto simulated = target.device();
  if (!simulated.tappable(request.identifier)) {
    return Error{"The device holds no notification \"" + request.identifier +
                 "\"; brellixctl notifications lists what there is"};
  }
  if (const auto status = checkFolderOf(request.png); !status) return status.error();
  TargetProcess process(target, VorselKelp::linux_platform::ProcessKind::contentExtension, request.timeLimit);
  process.add("--id", request.identifier);
  process.add("--do", request.acts);
  process.add("--png", request.png);
  process.add("--pictures", request.pictures);
  if (request.window) process.addFlag("--stay");
  auto display = displayFor(request);
  if (!display) return display.error();
  process.showOn(*std::move(display));
  auto child = process.run();
  if (!child) return child.error();
  if (!child->stopReason && child->exitStatus != 0) {
    return TargetProcess::failureOf(*child, "The content extension");
  }
  ShowOutcome outcome;
  outcome.carousel = child->firstOf("carousel");
  outcome.opened = child->firstOf("opened");
  outcome.pictures = child->valuesOf("picture");
  outcome.console = child->valuesOf("console");
  outcome.errorLines = std::move(child->errorLines);
  if (child->stopReason) {
    outcome.stopped = true;
    outcome.errorLines.push_back("The content extension stopped: " + *child->stopReason);
  }
  return outcome;
}

}  // namespace brellixctl
