#include "support/PictureServer.h"

#include <httplib.h>

#include <algorithm>
#include <thread>
#include <utility>

namespace VorselKelp::benchmarks {
namespace {

std::string word(std::size_t number) {
  return {static_cast<char>(number >> 8 & 0xff), static_cast<char>(number & 0xff)};
}

std::string segment(char marker, const std::string& body) {
  return std::string("\xff") + marker + word(body.size() + 2) + body;
}

}  // namespace

struct PictureServer::Impl {
  httplib::Server server;
  int port = 0;
  std::thread thread;
};

PictureServer::PictureServer(std::string picture) : impl_(std::make_unique<Impl>()) {
  impl_->server.Get("/picture.jpg",
                    [bytes = std::move(picture)](const httplib::Request&, httplib::Response& response) {
                      response.set_content(bytes, "image/jpeg");
                    });
  impl_->port = impl_->server.bind_to_any_port("127.0.0.1");
  impl_->thread = std::thread([this] { impl_->server.listen_after_bind(); });
  while (!impl_->server.is_running()) std::this_thread::yield();  // stop() does nothing before
}

PictureServer::~PictureServer() {
  impl_->server.stop();
  impl_->thread.join();
}

std::string PictureServer::url() const {
  return "http://127.0.0.1:" + std::to_string(impl_->port) + "/picture.jpg";
}

std::string greyJpeg(int width, int height, std::size_t size) {
  constexpr std::size_t longestComment = 65'533;
  // One code in each table: a block is a bit for "as bright as the one before" and one for "no details".
  const std::string codes = '\x01' + std::string(16, '\0');
  const auto blocks = static_cast<std::size_t>((width + 7) / 8) * static_cast<std::size_t>((height + 7) / 8);
  std::string file =
      "\xff\xd8" + segment('\xdb', std::string(1, '\0') + std::string(64, '\x01')) +
      segment('\xc0', '\x08' + word(static_cast<std::size_t>(height)) +
                          word(static_cast<std::size_t>(width)) + std::string("\1\1\x11\0", 4));
  const std::string scan = segment('\xc4', '\0' + codes + '\x10' + codes) +
                           segment('\xda', std::string("\1\1\0\0\x3f\0", 6)) +
                           std::string((blocks + 3) / 4, '\0') + "\xff\xd9";
  while (file.size() + scan.size() + 4 < size)
    file += segment('\xfe', std::string(std::min(size - file.size() - scan.size() - 4, longestComment), 'c'));
  return file + scan;
}

}  // namespace VorselKelp::benchmarks
