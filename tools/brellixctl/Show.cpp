#include <algorithm>
#include <filesystem>

#include "brellixctl/Operations.h"
#include "phone/TargetProcess.h"

namespace brellixctl {

using phone::ChildOutcome;
using phone::TargetProcess;
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

/// A phone starts the content extension for the categories that it is registered for, and for no other.
VorselKelp::Status checkCategory(const Target& target, const std::string& category) {
  const auto& known = target.manifest.contentCategories;
  if (std::ranges::find(known, category) != known.end()) return VorselKelp::Done{};
  std::string names;
  for (const auto& each : known) names += (names.empty() ? "\"" : ", \"") + each + '"';
  return Error{"A phone does not start the content extension: the notification " +
               (category.empty() ? "has no category" : "is of the category \"" + category + '"') +
               ", and the extension is for " + (names.empty() ? "none" : names) +
               " (\"contentCategories\" of the manifest); --anyway starts it"};
}

std::string failureOf(const ShowRequest& request, const ChildOutcome& child) {
  if (child.stopReason) return "The content extension stopped: " + *child.stopReason;
  if (const auto untouched = child.firstOf("nothingToTouch")) {
    const auto* why = untouched->as<std::string>();
    return why != nullptr ? *why : "There was nothing to touch";
  }
  if (!request.png.empty() && !child.firstOf("png")) return "No picture was written to " + request.png;
  return {};
}

}  // namespace

Result<ShowOutcome> show(const Target& target, const ShowRequest& request) {
  const auto shown = target.device().tappable(request.identifier);
  if (!shown) {
    return Error{"The device holds no notification \"" + request.identifier +
                 "\"; brellixctl notifications lists what there is"};
  }
  if (!request.anyway) {
    if (const auto status = checkCategory(target, shown->content.categoryIdentifier); !status)
      return status.error();
  }
  if (const auto status = checkFolderOf(request.png); !status) return status.error();
  TargetProcess process(target, VorselKelp::simulator::ProcessKind::contentExtension, request.timeLimit);
  process.add("--id", request.identifier);
  process.add("--do", request.acts);
  process.add("--png", request.png);
  process.add("--pictures", request.pictures);
  if (request.window) process.addFlag("--stay");
  auto display = displayFor(request);
  if (!display) return display.error();
  showOn(process, *display);
  auto child = process.run();
  if (!child) return child.error();
  if (!child->stopReason && child->exitStatus != 0) {
    return TargetProcess::failureOf(*child, "The content extension");
  }
  ShowOutcome outcome;
  outcome.carousel = child->firstOf("carousel");
  outcome.opened = child->firstOf("opened");
  outcome.pictures = child->valuesOf("picture");
  outcome.stopped = child->stopReason.has_value();
  outcome.failure = failureOf(request, *child);
  TargetProcess::report(*std::move(child), outcome);
  return outcome;
}

}  // namespace brellixctl
