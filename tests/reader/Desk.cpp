#include "reader/Desk.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <gio/gio.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <fstream>

#include "VorselKelpFreedesktop/MainQueue.h"
#include "VorselKelpPosix/Services.h"
#include "VorselKelpSystem/Delivery.h"
#include "VorselKelpSystem/Description.h"
#include "glib/Pointers.h"

namespace VorselKelp::testing_support {

Program::Program(const std::string& command) {
  int count = 0;
  char** arguments = nullptr;
  g_shell_parse_argv(command.c_str(), &count, &arguments, nullptr);
  g_spawn_async(nullptr, arguments, nullptr,
                static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD), nullptr, nullptr,
                &id_, nullptr);
  g_strfreev(arguments);
}

Program::~Program() {
  if (!running()) return;
  ::kill(id_, SIGTERM);
  ::waitpid(id_, nullptr, 0);
}

bool Program::running() {
  if (id_ != 0 && ::waitpid(id_, nullptr, WNOHANG) != 0) id_ = 0;
  return id_ != 0;
}

std::string output(const std::string& command) {
  char* text = nullptr;
  if (!g_spawn_command_line_sync(command.c_str(), &text, nullptr, nullptr, nullptr)) return "";
  std::string taken = text != nullptr ? text : "";
  g_free(text);
  while (taken.ends_with('\n')) taken.pop_back();
  return taken;
}

int pixels(unsigned long color) {
  auto* display = ::XOpenDisplay(nullptr);
  const auto root = DefaultRootWindow(display);
  XWindowAttributes size;
  ::XGetWindowAttributes(display, root, &size);
  const auto width = static_cast<unsigned>(size.width);
  const auto height = static_cast<unsigned>(size.height);
  auto* picture = ::XGetImage(display, root, 0, 0, width, height, AllPlanes, ZPixmap);
  int count = 0;
  for (int at = 0; at < size.width * size.height; ++at)
    count += (XGetPixel(picture, at % size.width, at / size.width) & 0xffffff) == color;
  XDestroyImage(picture);
  ::XCloseDisplay(display);
  return count;
}

Desk::Desk() {
  for (const auto& [variable, folder] : {std::pair("XDG_DATA_HOME", "/data"),
                                         {"XDG_CACHE_HOME", "/cache"},
                                         {"XDG_CONFIG_HOME", "/config"},
                                         {"HOME", ""}}) {
    ::setenv(variable, (folder_.path() + folder).c_str(), 1);
  }
  for (const auto& [variable, value] : {std::pair("G_MESSAGES_DEBUG", "VorselKelp"),
                                        {"GTK_A11Y", "none"},
                                        {"LC_ALL", "C.UTF-8"},
                                        {"LANGUAGE", ""}}) {
    ::setenv(variable, value, 1);
  }
  serve("{}");
  store_ = storeOf(reader);
  store_->setAuthorization(platform::AuthorizationStatus::authorized);
}

void Desk::serve(const std::string& configuration, std::map<std::string, int> statuses) {
  collection_server::ServerOptions options;
  options.document = configuration;
  options.statuses = std::move(statuses);
  options.received = [this](const auto& request) {
    {
      const std::lock_guard lock(mutex_);
      requests_.push_back(request.path + " " + request.body);
    }
    const std::lock_guard held(answers_);
  };
  server_ = *collection_server::CollectionServer::start(std::move(options));
}

std::string Desk::describe(const std::string& identifier) const {
  const auto file = folder_ / (identifier + ".json");
  std::string endpoints;
  for (const char* name : {"collection", "tag", "events", "adFeed", "script"})
    endpoints += (endpoints.empty() ? "" : ",") + std::string("\"") + name + "\":\"" + server_->url() + "\"";
  std::ofstream(file) << R"({"bundleIdentifier":")" << identifier << R"(","name":"Reader","apiKey":"k-1",)"
                      << R"("appGroupId":"group.com.example.reader",)"
                      << R"("properties":{"VorselKellpTrackID":"feed-7"},"endpoints":{)" << endpoints << "}}";
  return file;
}

std::unique_ptr<system::NotificationStore> Desk::storeOf(const std::string& identifier) const {
  const auto description = *system::loadDescription(describe(identifier));
  return std::make_unique<system::NotificationStore>(system::foldersOf(description).notifications, identifier,
                                                     posix::makeClock());
}

std::unique_ptr<Program> Desk::start(const std::string& command, const std::string& lines) const {
  return std::make_unique<Program>("sh -c 'exec " + command + " > " + folder_ / lines + " 2>&1'");
}

std::string Desk::written(const std::string& lines) const {
  std::ifstream file(folder_ / lines);
  return {std::istreambuf_iterator(file), {}};
}

void Desk::startReader() {
  ::setenv("READER_DESCRIPTION", describe(reader).c_str(), 1);
  reader_ = start(READER, "lines");
  waitFor([&] { return requests("/v2/activity") > 0; });
}

bool Desk::waitFor(const std::function<bool()>& done) {
  const auto end = g_get_monotonic_time() + 20 * G_USEC_PER_SEC;
  const auto timer = g_timeout_add(
      100, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
  bool reached = done();
  while (!reached && g_get_monotonic_time() < end) {
    g_main_context_iteration(nullptr, TRUE);
    reached = done();
  }
  g_source_remove(timer);
  EXPECT_TRUE(reached) << "what was waited for did not happen";
  return reached;
}

int Desk::requests(std::string_view part) {
  const std::lock_guard lock(mutex_);
  return static_cast<int>(std::ranges::count_if(
      requests_, [&](const auto& request) { return request.find(part) != request.npos; }));
}

void Desk::activate(const std::string& identifier, const std::string& action, const std::string& parameter) {
  auto path = "/" + identifier;
  std::ranges::replace(path, '.', '/');
  const freedesktop::TextPtr quoted(g_shell_quote(parameter.c_str()));
  output("gdbus call --session --dest " + identifier + " --object-path " + path +
         " --method org.gtk.Actions.Activate " + action + " " + quoted.get() + " '{}'");
}

std::string Desk::window(const std::string& title) {
  return output("xdotool search --onlyvisible --name '" + title + "'");
}

void Desk::closeWindow(const std::string& title) {
  auto* display = ::XOpenDisplay(nullptr);
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.window = std::stoul(window(title));
  event.xclient.message_type = ::XInternAtom(display, "WM_PROTOCOLS", False);
  event.xclient.format = 32;
  event.xclient.data.l[0] = static_cast<long>(::XInternAtom(display, "WM_DELETE_WINDOW", False));
  ::XSendEvent(display, event.xclient.window, False, NoEventMask, &event);
  ::XCloseDisplay(display);
}

platform::NotificationRequest Desk::fittedOut(const std::string& identifier) const {
  system::ServiceProgram service;
  service.program = READER_SERVICE;
  service.arguments = {describe(reader)};
  const auto delivery = system::makeDelivery(std::move(service), freedesktop::makeMainQueue());
  std::optional<Result<system::PushResult>> fitted;
  const auto url = server_->url();
  delivery->deliver(
      {identifier,
       R"({"aps":{"mutable-content":1,"alert":{"title":"Storm","n":{"body":"Stay in","image":")" + url +
           R"(/images/storm.png","actions":[{"action":"yes","title":"More","url":")" + url +
           R"(/articles/more"}],"data":{"url":")" + url + R"(/articles/storm","t":[")" + url +
           R"(/track/click"]}}}}})",
       {}},
      {[&](Result<system::PushResult> result) { fitted = std::move(result); }, {}});
  waitFor([&] { return fitted.has_value(); });
  return (**fitted).request;
}

platform::NotificationRequest Desk::campaign(const std::string& identifier) const {
  const auto url = server_->url();
  const auto page = [&](const std::string& k) {
    return R"({"t":"Story )" + k + R"(","i":[")" + url + "/track/seen" + k + R"("],"o":{"image":")" + url +
           R"(/images/storm.png","data":{"url":")" + url + "/articles/" + k + R"(","t":[")" + url +
           R"(/track/click"]}}})";
  };
  platform::NotificationRequest made;
  made.identifier = identifier;
  made.content.userInfo = platform::UserInfo::fromJSON(R"({"p":[)" + page("0") + "," + page("1") + "," +
                                                       page("2") + R"(],"isMultiple":true})");
  return made;
}

}  // namespace VorselKelp::testing_support
