// Reads every include of the tree: what stands above may know what stands below, never the other way round.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::testing_support {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

struct Room {
  std::string folder;   ///< the longest one that fits is a file's
  std::string names;    ///< with which its headers are included from elsewhere
  std::string arrows;   ///< the names that it may include, and with each what that one may include
  std::string library;  ///< libraries that it speaks to; nobody above gets them with it
};

// What anybody may include of the core is VorselKelp and BrellixPush; its inner folders are its own, and of
// those who measure it and try it.
const std::vector<Room> house{
    {"include/VorselKelp", "VorselKelp", "", ""},
    {"include/BrellixPush", "BrellixPush", "VorselKelp", ""},
    {"src/ui", "ui", "VorselKelp", ""},
    {"src/boost_url", "", "", "Boost"},
    {"src/base", "base", "VorselKelp", "Boost POSIX"},
    {"src/json", "json", "base", "Boost"},
    {"src/core", "core", "base", ""},
    {"src/net", "net", "core json", ""},
    {"src/gif", "gif", "core json", ""},
    {"src/ads", "ads", "net gif", ""},
    {"src/analytics", "analytics", "net gif", ""},
    {"src/prompt", "prompt", "net gif", ""},
    {"src/push", "push", "ads analytics prompt", "Boost"},
    {"src/location", "location", "push", ""},
    {"src/content_ext", "content_ext", "push", ""},
    {"src/kellp", "kellp", "content_ext location", ""},
    {"src/facade", "facade", "kellp BrellixPush", ""},
    {"platform/memory", "VorselKelpTesting", "VorselKelp", ""},
    {"platform/posix", "VorselKelpPosix", "VorselKelp", "POSIX SQLite libcurl giflib gdk-pixbuf"},
    {"platform/system", "VorselKelpSystem", "VorselKelpPosix", "POSIX SQLite"},
    {"platform/webpush", "VorselKelpWebPush records", "VorselKelp", "POSIX OpenSSL"},
    {"platform/freedesktop", "VorselKelpFreedesktop glib", "VorselKelpSystem", "POSIX GLib"},
    {"platform/gtk", "VorselKelpGtk", "VorselKelpFreedesktop glib", "GTK"},
    {"platform/webkit", "VorselKelpWebKit", "VorselKelpGtk glib", "WebKitGTK GLib"},
    {"agent", "bus", "VorselKelpFreedesktop VorselKelpWebPush glib", "POSIX SQLite GLib"},
    {"platform/simulator", "VorselKelpSimulator", "VorselKelpSystem", "POSIX SQLite"},
    {"platform/simulator/window", "VorselKelpSimulatorScreen window", "VorselKelpSimulator VorselKelpWebKit",
     "GTK"},
    {"examples/reader", "", "VorselKelpGtk VorselKelpWebKit", "GTK gettext"},
    {"examples", "reader_app", "VorselKelpSimulatorScreen BrellixPush VorselKelpTesting", "GoogleTest"},
    {"tools/reliability", "", "", "POSIX"},
    {"tools/collection_server", "collection_server pictures", "VorselKelpSimulator", "POSIX httplib"},
    {"tools/phone", "phone", "VorselKelpSimulator", "POSIX"},
    {"tools/gateway", "gateway", "phone VorselKelpWebPush", "POSIX OpenSSL nghttp2 libcurl"},
    // Thousands of devices in one process are cores of their own, on a platform in memory.
    {"tools/brellixctl", "brellixctl",
     "VorselKelpWebPush collection_server gateway phone kellp VorselKelpTesting", "POSIX CLI11"},
    {"tools/distributor", "distributor", "bus VorselKelpFreedesktop glib", "POSIX CLI11 GLib httplib"},
    {"benchmarks/agent", "agent", "facade VorselKelpTesting distributor bus support", "POSIX GLib"},
    {"benchmarks/gateway", "", "support gateway", "POSIX OpenSSL"},
    {"benchmarks", "support", "facade VorselKelpPosix VorselKelpWebPush VorselKelpWebKit VorselKelpTesting",
     "POSIX Boost SQLite giflib httplib benchmark OpenSSL WebKitGTK"},
    {"fuzz", "", "facade VorselKelpPosix VorselKelpWebPush VorselKelpTesting records gateway", ""},
};

const std::map<std::string, std::string, std::less<>> libraries{
    {"benchmark", "benchmark"},   {"boost", "Boost"},      {"CLI", "CLI11"},         {"curl", "libcurl"},
    {"gdk-pixbuf", "gdk-pixbuf"}, {"gif_lib.h", "giflib"}, {"gio", "GLib"},          {"glib.h", "GLib"},
    {"glib-unix.h", "GLib"},      {"gmock", "GoogleTest"}, {"gtest", "GoogleTest"},  {"gtk", "GTK"},
    {"httplib.h", "httplib"},     {"jsc", "WebKitGTK"},    {"libintl.h", "gettext"}, {"nghttp2", "nghttp2"},
    {"openssl", "OpenSSL"},       {"sqlite3.h", "SQLite"}, {"webkit", "WebKitGTK"}};

std::set<std::string> words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

const Room* roomOf(const std::string& file) {
  const Room* found = nullptr;
  for (const auto& room : house) {
    if (file.starts_with(room.folder + "/") && (!found || room.folder.size() > found->folder.size()))
      found = &room;
  }
  return found;
}

/// The names that may be included from a room: its own, its arrows', and those of all below.
std::set<std::string> reachable(const Room& room) {
  auto names = words(room.names);
  std::set<std::string> open = words(room.arrows);
  while (!open.empty()) {
    const auto name = *open.begin();
    open.erase(open.begin());
    if (!names.insert(name).second) continue;
    for (const auto& below : house) {
      if (words(below.names).contains(name)) open.merge(words(below.arrows));
    }
  }
  return names;
}

bool allowed(const fs::path& tree, const Room& room, const std::string& file, bool quoted,
             const std::string& name) {
  const auto first = name.substr(0, name.find('/'));
  if (!quoted) {
    if (first == name && !name.ends_with(".h")) return true;  // the language's own
    const auto library = libraries.find(first);
    return words(room.library).contains(library != libraries.end() ? library->second : "POSIX");
  }
  if (reachable(room).contains(first)) return true;
  if (name.ends_with(".js.h") || name.ends_with(".xml.h")) return true;  // made by the build
  for (const auto& inner : {room.folder + "/" + name, (fs::path(file).parent_path() / name).string()}) {
    if (roomOf(inner) == &room && fs::exists(tree / inner)) return true;
  }
  return false;
}

/// "FILE includes NAME", sorted.
std::vector<std::string> wrongArrows(const fs::path& tree) {
  static const std::regex include(R"re(^\s*#\s*include\s+(["<])([^">]+)[">])re");
  std::set<std::string> wrong;
  for (const char* part :
       {"include", "src", "platform", "agent", "examples", "tools", "benchmarks", "fuzz"}) {
    if (!fs::exists(tree / part)) continue;
    for (const auto& entry : fs::recursive_directory_iterator(tree / part)) {
      const auto extension = entry.path().extension();
      if (extension != ".h" && extension != ".cpp") continue;
      const auto file = fs::relative(entry.path(), tree).string();
      const auto* room = roomOf(file);
      if (room == nullptr) wrong.insert(file + " is in no room");
      std::ifstream stream(entry.path());
      for (std::string line; room != nullptr && std::getline(stream, line);) {
        std::smatch match;
        if (!std::regex_search(line, match, include)) continue;
        if (!allowed(tree, *room, file, match[1] == "\"", match[2]))
          wrong.insert(file + " includes " + match[2].str());
      }
    }
  }
  return {wrong.begin(), wrong.end()};
}

TEST(ArrowsTest, TheHouseHasNoOthers) {
  EXPECT_THAT(wrongArrows(SOURCE_TREE), IsEmpty());
}

TEST(ArrowsTest, AWrongOneIsFound) {
  const TemporaryFolder tree;
  const auto write = [&](const std::string& file, const std::string& includes) {
    fs::create_directories(fs::path(tree / file).parent_path());
    std::ofstream(tree / file) << includes;
  };
  write("platform/posix/a.cpp", "#include \"VorselKelpSimulator/Manifest.h\"\n#include <vector>\n");
  write("platform/gtk/stage/a.h", "#include \"VorselKelpPosix/LineSink.h\"\n#include <webkit/webkit.h>\n");
  write("platform/simulator/host/a.h", "#include \"VorselKelpGtk/Stage.h\"\n#include \"window/a.h\"\n");
  write("platform/simulator/window/a.h", "#include \"VorselKelpGtk/Stage.h\"\n");
  write("src/net/a.h", "# include \"push/Tags.h\"\n#include \"core/Text.h\"\n");
  write("fuzz/a.cpp", "#include \"VorselKelpGtk/Stage.h\"\n");
  write("platform/attic/a.h", "");
  EXPECT_THAT(
      wrongArrows(tree.path()),
      ElementsAre("fuzz/a.cpp includes VorselKelpGtk/Stage.h", "platform/attic/a.h is in no room",
                  "platform/gtk/stage/a.h includes webkit/webkit.h",
                  "platform/posix/a.cpp includes VorselKelpSimulator/Manifest.h",
                  "platform/simulator/host/a.h includes VorselKelpGtk/Stage.h",
                  "platform/simulator/host/a.h includes window/a.h", "src/net/a.h includes push/Tags.h"));
}

}  // namespace
}  // namespace VorselKelp::testing_support
