// vorsel-push-agent: gets an application its push messages while it does not run. One for each application,
// started by the session's bus.

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>

#include "Agent.h"

using namespace VorselKelp;

namespace {

constexpr const char* usage =
    "Usage: vorsel-push-agent --description FILE [--idle SECONDS]\n"
    "  --description FILE   what the application's processes know of it\n"
    "  --idle SECONDS       how long to stay when nothing is left to wait for (default: 10)\n";

struct Arguments {
  std::string description;
  double idle = agent::AgentOptions().idleSeconds;
};

std::optional<Arguments> read(int argc, char** argv) {
  Arguments arguments;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string_view option = argv[i];
    if (option == "--description") {
      arguments.description = argv[i + 1];
    } else if (option == "--idle") {
      char* end = nullptr;
      arguments.idle = std::strtod(argv[i + 1], &end);
      if (*end != 0 || !(arguments.idle >= 0)) return std::nullopt;
    } else {
      return std::nullopt;
    }
  }
  if (argc % 2 == 0 || arguments.description.empty()) return std::nullopt;
  return arguments;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) return std::fputs(usage, stdout) < 0 ? 1 : 0;
  const auto arguments = read(argc, argv);
  if (!arguments) {
    std::fputs(usage, stderr);
    return 2;
  }
  std::error_code error;
  const auto file = std::filesystem::absolute(arguments->description, error).lexically_normal().string();
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
  // Its threads mostly wait; a heap for each would be memory that is never used again.
  ::mallopt(M_ARENA_MAX, 1);
  agent::AgentOptions options;
  options.descriptionFile = file;
  options.idleSeconds = arguments->idle;
  return agent::Agent(*std::move(description), std::move(options)).run();
}
