#pragma once

#include <memory>
#include <string>

namespace VorselKelp::benchmarks {

/// Serves one picture on this machine for as long as it lives.
class PictureServer {
 public:
  explicit PictureServer(std::string picture);
  PictureServer(const PictureServer&) = delete;
  PictureServer& operator=(const PictureServer&) = delete;
  ~PictureServer();

  [[nodiscard]] std::string url() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// A baseline JPEG of nothing but grey, made `size` bytes long by comments behind its frame header, where a
/// photograph has its data.
[[nodiscard]] std::string greyJpeg(int width, int height, std::size_t size);

}  // namespace VorselKelp::benchmarks
