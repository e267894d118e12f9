// desk_distributor: a distributor of push messages for a desk that has none. It takes Web Push requests on
// the loopback interface and hands them to the applications of the session; what it was told ends with it.

#include <httplib.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <future>
#include <thread>

#include "VorselKelpFreedesktop/MainQueue.h"
#include "distributor/Distributor.h"

using namespace VorselKelp;

namespace {

constexpr std::size_t longestMessage = 4096;  // bytes
constexpr int patience = 20;                  // seconds

// Answers of a push service.
constexpr int created = 201;
constexpr int gone = 404;
constexpr int unavailable = 503;

struct Desk {
  std::shared_ptr<freedesktop::GlibMainQueue> queue = freedesktop::makeMainQueue();
  std::unique_ptr<agent::Bus> bus;
  std::unique_ptr<distributor::Distributor> distributor;
};

/// Runs `work` on the main thread and waits for what it fulfils.
template <class Value>
Value ask(Desk& desk, std::function<void(std::shared_ptr<std::promise<Value>>)> work, Value late) {
  auto promise = std::make_shared<std::promise<Value>>();
  auto answer = promise->get_future();
  desk.queue->async([work = std::move(work), promise] { work(promise); });
  if (answer.wait_for(std::chrono::seconds(patience)) != std::future_status::ready) return late;
  return answer.get();
}

int push(Desk& desk, const std::string& endpoint, const std::string& body) {
  return ask<int>(
      desk,
      [&desk, endpoint, body](const auto& promise) {
        const std::string id = freedesktop::TextPtr(g_uuid_string_random()).get();
        const auto status = desk.distributor->send(endpoint, body, id, [](const Status& delivered) {
          if (!delivered) std::printf("not acknowledged: %s\n", delivered.error().description.c_str());
        });
        promise->set_value(status ? created : gone);
      },
      unavailable);
}

std::string list(Desk& desk) {
  return ask<std::string>(desk,
                          [&desk](const auto& promise) {
                            std::string lines;
                            for (const auto& [endpoint, registration] : desk.distributor->registrations())
                              lines += registration.service + " " + desk.distributor->habits.endpointsBefore +
                                       endpoint + "\n";
                            promise->set_value(lines);
                          },
                          {});
}

void route(httplib::Server& server, Desk& desk) {
  server.set_payload_max_length(longestMessage);
  server.Post(R"(/push/([\w-]+))", [&desk](const httplib::Request& request, httplib::Response& response) {
    response.status = push(desk, request.matches[1], request.body);
    if (response.status == created) response.set_header("Location", request.path);
  });
  server.Get("/registrations", [&desk](const httplib::Request&, httplib::Response& response) {
    response.set_content(list(desk), "text/plain");
  });
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("A distributor of push messages for a desk that has none");
  int port = 0;
  std::string certificate;
  std::string key;
  distributor::Habits habits;
  app.add_option("--port", port, "Where it listens on 127.0.0.1 (default: any free port)");
  auto* certificateOption = app.add_option("--certificate", certificate, "Its certificate (PEM), for https");
  app.add_option("--key", key, "Its private key (PEM)")->needs(certificateOption);
  app.add_option("--interface", habits.version, "The version of the interface (1 or 2)")
      ->check(CLI::Range(1, 2));
  CLI11_PARSE(app, argc, argv);

  std::unique_ptr<httplib::Server> server;
  if (certificate.empty()) {
    server = std::make_unique<httplib::Server>();
  } else {
    server = std::make_unique<httplib::SSLServer>(certificate.c_str(), key.c_str());
  }
  if (!server->is_valid()) return std::fputs("The certificate or its key can't be used\n", stderr), 1;
  const bool bound = port == 0 ? (port = server->bind_to_any_port("127.0.0.1")) > 0
                               : server->bind_to_port("127.0.0.1", port);
  if (!bound) return std::fputs("The port is taken\n", stderr), 1;

  Desk desk;
  auto bus = agent::Bus::connect({});
  if (!bus) return std::fprintf(stderr, "%s\n", bus.error().description.c_str()), 1;
  desk.bus = *std::move(bus);
  habits.endpointsBefore =
      std::string(certificate.empty() ? "http" : "https") + "://localhost:" + std::to_string(port) + "/push/";
  desk.distributor = std::make_unique<distributor::Distributor>(*desk.bus, "desk", habits);
  route(*server, desk);

  auto* loop = g_main_loop_new(nullptr, FALSE);
  desk.bus->whenClosed([loop] { g_main_loop_quit(loop); });
  std::thread serving([&] { server->listen_after_bind(); });
  desk.distributor->begin([&](bool owned) {
    if (!owned) return std::fputs("There is another desk's distributor\n", stderr), g_main_loop_quit(loop);
    std::printf("listening on port %d\n", port);
    std::fflush(stdout);
  });
  g_main_loop_run(loop);
  server->stop();
  serving.join();
  g_main_loop_unref(loop);
  return 0;
}
