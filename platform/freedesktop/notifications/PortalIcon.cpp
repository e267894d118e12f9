#include "notifications/PortalIcon.h"

#include <utility>

#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpPosix/SquarePicture.h"
#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr std::size_t largestFile = std::size_t{16} << 20;  // bytes
constexpr std::int64_t mostPixels = std::int64_t{8} << 20;
constexpr int longestSide = 512;  // the portal drops larger icons without a word

struct IconJob {
  std::string file;
  std::shared_ptr<platform::ImageDecoder> decoder;
  std::shared_ptr<platform::MainQueue> mainQueue;
  platform::UniqueFunction<void(std::string)> answer;
  Result<std::string> png = Error{};

  Result<std::string> made() const {
    const auto bytes = posix::readWholeFile(file, largestFile);
    if (!bytes) return bytes.error();
    const auto picture = decoder->decode(*bytes, mostPixels);
    return picture ? posix::squarePng(**picture, longestSide) : picture.error();
  }
};

void work(GTask* task, gpointer, gpointer data, GCancellable*) {
  auto& job = *static_cast<IconJob*>(data);
  job.png = job.made();
  g_task_return_boolean(task, TRUE);
}

void worked(GObject*, GAsyncResult* result, gpointer) {
  auto& job = *static_cast<IconJob*>(g_task_get_task_data(G_TASK(result)));
  if (!job.png)
    posix::standardErrorLines()("A notification is shown without its picture: " +
                                job.png.error().description);
  job.mainQueue->async(
      [answer = std::move(job.answer), png = job.png ? *std::move(job.png) : std::string()]() mutable {
        answer(std::move(png));
      });
}

}  // namespace

void makePortalIcon(std::string file, std::shared_ptr<platform::ImageDecoder> decoder,
                    std::shared_ptr<platform::MainQueue> mainQueue,
                    platform::UniqueFunction<void(std::string png)> answer) {
  const ObjectPtr<GTask> task(g_task_new(nullptr, nullptr, worked, nullptr));
  g_task_set_task_data(
      task.get(), new IconJob{std::move(file), std::move(decoder), std::move(mainQueue), std::move(answer)},
      [](gpointer job) { delete static_cast<IconJob*>(job); });
  g_task_run_in_thread(task.get(), work);
}

}  // namespace VorselKelp::freedesktop
