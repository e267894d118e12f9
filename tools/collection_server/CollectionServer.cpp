#include "collection_server/CollectionServer.h"

#include <httplib.h>
#include <sys/socket.h>

#include <chrono>
#include <mutex>
#include <thread>

#include "collection_server/Picture.h"
#include "collection_server/SampleDocuments.h"

namespace collection_server {
namespace {

constexpr const char* host = "127.0.0.1";
constexpr const char* json = "application/json";
constexpr std::size_t bodyLimit = std::size_t{16} << 20;
constexpr std::size_t requestsPerConnection = 1'000'000;

ReceivedRequest describe(const httplib::Request& request) {
  ReceivedRequest received;
  received.time = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
  received.method = request.method;
  received.path = request.target;
  for (const auto& [name, value] : request.headers) {
    // The server library adds the two ends of the connection as if they had been sent.
    if (name == "REMOTE_ADDR" || name == "REMOTE_PORT" || name == "LOCAL_ADDR" || name == "LOCAL_PORT")
      continue;
    auto& text = received.headers[name];
    text += (text.empty() ? "" : ", ") + value;
  }
  received.body = request.body;
  return received;
}

}  // namespace

class CollectionServer::Implementation {
 public:
  explicit Implementation(ServerOptions options) : options_(std::move(options)) {
    if (options_.document.empty()) options_.document = sampleConfiguration();
    if (options_.script.empty()) options_.script = samplePromptScript();
    server_.new_task_queue = [this] { return new httplib::ThreadPool(options_.threads); };
    server_.set_payload_max_length(bodyLimit);
    server_.set_keep_alive_max_count(requestsPerConnection);
    server_.set_tcp_nodelay(true);
    server_.set_socket_options([this](int socket) {
      httplib::default_socket_options(socket);
      socket_ = socket;
    });
    const auto handler = [this](const httplib::Request& request, httplib::Response& response) {
      handle(request, response);
    };
    server_.Get(".*", handler).Post(".*", handler).Put(".*", handler).Delete(".*", handler);
  }

  ~Implementation() {
    server_.stop();
    if (thread_.joinable()) thread_.join();
  }

  bool start() {
    port_ = options_.port;
    if (port_ == 0) {
      port_ = server_.bind_to_any_port(host);
      if (port_ <= 0) return false;
    } else if (!server_.bind_to_port(host, port_)) {
      return false;
    }
    // The library lets five connections wait. A fleet's come all at once, and one that finds no place is lost
    // for seconds.
    ::listen(socket_, SOMAXCONN);
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    while (!server_.is_running()) std::this_thread::yield();
    return true;
  }

  [[nodiscard]] int port() const { return port_; }
  [[nodiscard]] std::string url() const {
    return "http://" + std::string(host) + ":" + std::to_string(port_);
  }

 private:
  void handle(const httplib::Request& request, httplib::Response& response) {
    if (options_.received) {
      const std::lock_guard lock(mutex_);
      options_.received(describe(request));
    }
    answer(request, response);
    const auto forced = options_.statuses.find(request.path);
    if (forced == options_.statuses.end()) return;
    response.status = forced->second;
    if (forced->second < 200 || forced->second == 204 || forced->second > 299) response.body.clear();
  }

  void answer(const httplib::Request& request, httplib::Response& response) const {
    const auto aliased = options_.aliases.find(request.target.substr(0, request.target.find('?')));
    const auto& path = aliased != options_.aliases.end() ? aliased->second : request.path;
    response.status = 200;
    if (request.method == "POST" && (path == "/v2/activity" || path == "/v2/users")) {
      response.status = 201;
      response.set_content("{}", json);
    } else if (path.starts_with("/tag/")) {
      response.set_content(options_.document, json);
    } else if (path == "/v2/mobile.js") {
      response.set_content(options_.script, "text/javascript; charset=utf-8");
    } else if (path.starts_with("/articles/")) {
      response.set_content(sampleArticle(url()), "text/html; charset=utf-8");
    } else if (path.starts_with("/v1/display/")) {
      response.set_content(sampleAd(url()), json);
    } else if (path.starts_with("/images/")) {
      response.set_content(std::string(pictureFor(path)), "image/png");
    } else {
      response.set_content("", "text/plain");
    }
  }

  ServerOptions options_;
  httplib::Server server_;
  std::thread thread_;
  std::mutex mutex_;
  int port_ = 0;
  int socket_ = -1;  ///< the library's
};

CollectionServer::CollectionServer(std::unique_ptr<Implementation> implementation)
    : implementation_(std::move(implementation)) {}
CollectionServer::~CollectionServer() = default;

VorselKelp::Result<std::unique_ptr<CollectionServer>> CollectionServer::start(ServerOptions options) {
  const int port = options.port;
  auto implementation = std::make_unique<Implementation>(std::move(options));
  if (!implementation->start()) {
    return VorselKelp::Error{"Cannot serve on port " + std::to_string(port) +
                             "; choose another one with --port, or any free one with --port 0"};
  }
  return std::unique_ptr<CollectionServer>(new CollectionServer(std::move(implementation)));
}

int CollectionServer::port() const {
  return implementation_->port();
}
std::string CollectionServer::url() const {
  return implementation_->url();
}

}  // namespace collection_server
