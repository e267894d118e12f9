#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "support/BareStore.h"
#include "support/BenchmarkPlatform.h"
#include "support/ChildProcess.h"
#include "support/PictureServer.h"
#include "support/ProcessFigures.h"
#include "support/SystemCalls.h"

namespace VorselKelp::benchmarks {
namespace {

/// A device home with one application whose store exists, as after its first start.
struct Device {
  explicit Device(const std::string& image = "") {
    std::ofstream(folder.path + "/push.json") << quietPush(image);
    std::ofstream(folder.path + "/app.json")
        << R"({"bundleIdentifier":"com.example.news","version":"1.0","machine":"iPhone13,2","apiKey":"k-123",)"
           R"("appGroupId":"group.com.example.news","switches":{"push":true}})";
    const BareStore made(folder.path + "/bare.sqlite", 2048);
  }

  [[nodiscard]] std::vector<std::string> extension(int number) const {
    return {SERVICE_EXECUTABLE,           "--home",    folder.path + "/home",      "--app",
            folder.path + "/app.json",    "--payload", folder.path + "/push.json", "--id",
            "n-" + std::to_string(number)};
  }
  [[nodiscard]] std::vector<std::string> described(int number) const {
    return {DESCRIBED_EXECUTABLE, folder.path + "/app.json", "--id", "n-" + std::to_string(number)};
  }
  [[nodiscard]] std::string payload() const { return folder.path + "/push.json"; }
  [[nodiscard]] std::vector<std::string> bare(int number, const char* program = BARE_EXECUTABLE) const {
    return {program, folder.path + "/push.json", folder.path + "/bare.sqlite", "n-" + std::to_string(number)};
  }

  TemporaryFolder folder;
};

void extension(benchmark::State& state) {
  const Device device;
  int number = 0;
  runChild(device.extension(number++));
  for (auto _ : state) runChild(device.extension(number++));
}

void describedExtension(benchmark::State& state) {
  const Device device;
  ::setenv("XDG_DATA_HOME", (device.folder.path + "/data").c_str(), 1);
  ::setenv("XDG_CACHE_HOME", (device.folder.path + "/cache").c_str(), 1);
  int number = 0;
  runChild(device.described(number++), device.payload());
  for (auto _ : state) runChild(device.described(number++), device.payload());
}

void bareExtension(benchmark::State& state, const char* program) {
  const Device device;
  int number = 0;
  runChild(device.bare(number++, program));
  for (auto _ : state) runChild(device.bare(number++, program));
}

template <class Command>
Measured memory(Command command, int runs = 21) {
  std::vector<double> peaks;
  for (int i = 0; i < runs; ++i) peaks.push_back(static_cast<double>(peakMemory(command(i))) / 1024);
  return Measured(std::move(peaks));
}

/// Of one process after the other on the same store, whose log grows and is taken in meanwhile.
template <class Command>
Measured calls(Command command) {
  constexpr int runs = 61;
  std::vector<double> counts;
  for (int i = 0; i < runs; ++i) counts.push_back(static_cast<double>(systemCalls(command(i))));
  return Measured(std::move(counts));
}

/// Whether a file of this size was written anywhere below the folder.
bool holdsFile(const std::string& folder, std::size_t size) {
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file() && entry.file_size() == size) return true;
  }
  return false;
}

BENCHMARK(extension)->Name("service extension, spawn to exit")->UseRealTime();
BENCHMARK(describedExtension)->Name("service extension from a description")->UseRealTime();
BENCHMARK_CAPTURE(bareExtension, , BARE_EXECUTABLE)->Name("bare extension")->UseRealTime();
BENCHMARK_CAPTURE(bareExtension, , STATIC_EXECUTABLE)->Name("bare extension, static")->UseRealTime();

}  // namespace

Line serviceExtensionSystemCalls() {
  const Device device;
  return {"service extension, system calls from exec to exit",
          "",
          calls([&](int i) { return device.extension(i); }),
          calls([&](int i) { return device.bare(i); }),
          120,
          Line::Goal::value};
}

Line serviceExtensionMemory() {
  const Device device;
  return {"service extension, peak memory",
          "MB",
          memory([&](int i) { return device.extension(i); }),
          memory([&](int i) { return device.bare(i); }),
          1.0,
          Line::Goal::difference};
}

Line serviceExtensionImageMemory() {
  const std::string picture = greyJpeg(8000, 6000, std::size_t{10} << 20);
  ::setenv("no_proxy", "127.0.0.1", 1);
  const PictureServer server(picture);
  const Device device(server.url());
  const Measured peak = memory([&](int i) { return device.extension(i); }, 5);
  if (!holdsFile(device.folder.path, picture.size())) std::abort();  // nothing was attached
  return {
      "service extension, JPEG of 10 MB and 48 megapixels, peak", "MB", peak, 0, 24, Line::Goal::difference};
}

}  // namespace VorselKelp::benchmarks
