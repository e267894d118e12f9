// Runs a fuzz target over every file of its corpus, without a fuzzer.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesIn(const fs::path& folder) {
  std::vector<fs::path> files;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool replay(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file.good() && !file.eof()) return false;
  // Said first, so that whoever reads of a crash knows which input it was.
  std::printf("%s\n", path.c_str());
  std::fflush(stdout);
  // A copy of just this size: reading past its end shows under the address sanitizer.
  const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
  (void)LLVMFuzzerTestOneInput(input.data(), input.size());
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
    return 2;
  }
  const auto files = filesIn(arguments[1]);
  if (files.empty()) std::fprintf(stderr, "%s holds no inputs\n", arguments[1]);
  return !files.empty() && std::all_of(files.begin(), files.end(), replay) ? 0 : 1;
}
