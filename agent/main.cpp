// vorsel-push-agent: gets an application its push messages while it does not run. One for each application,
// started by the session's bus.

#include <cstdio>
#include <cstring>
#include <filesystem>

#include "Agent.h"

using namespace VorselKelp;

namespace {

constexpr const char* usage = "Usage: vorsel-push-agent --description FILE\n";

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) return std::fputs(usage, stdout) < 0 ? 1 : 0;
  if (argc != 3 || std::strcmp(argv[1], "--description") != 0) {
    std::fputs(usage, stderr);
    return 2;
  }
  std::error_code error;
  const auto file = std::filesystem::absolute(argv[2], error).lexically_normal().string();
  auto description = system::loadDescription(file);
  if (!description) {
    std::fprintf(stderr, "%s\n", description.error().description.c_str());
    return 2;
  }
  if (!g_dbus_is_name((description->bundleIdentifier + ".Push").c_str())) {
    std::fprintf(stderr, "The identifier \"%s\" can't be a name on the bus\n",
                 description->bundleIdentifier.c_str());
    return 2;
  }
  agent::AgentOptions options;
  options.descriptionFile = file;
  return agent::Agent(*std::move(description), std::move(options)).run();
}
