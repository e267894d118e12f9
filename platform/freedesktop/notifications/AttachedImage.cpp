#include "notifications/AttachedImage.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr std::size_t headSize = 12;

/// The file's first bytes; fewer when it is shorter, none when it is no plain file: a pipe would never
/// answer.
std::string headOf(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return {};
  std::array<char, headSize> head{};
  struct stat about {};
  const bool plain = ::fstat(file, &about) == 0 && S_ISREG(about.st_mode);
  const auto size = plain ? ::read(file, head.data(), head.size()) : 0;
  ::close(file);
  return {head.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

bool beginsAsImage(std::string_view head) {
  using namespace std::string_view_literals;
  if (head.starts_with("RIFF") && head.substr(std::min(head.size(), std::size_t{8})) == "WEBP") return true;
  for (const auto mark : {"\x89PNG\r\n\x1a\n"sv, "\xff\xd8\xff"sv, "GIF87a"sv, "GIF89a"sv}) {
    if (head.starts_with(mark)) return true;
  }
  return false;
}

}  // namespace

std::optional<std::string> imageFile(const std::vector<platform::NotificationAttachment>& attachments) {
  const auto found = std::ranges::find_if(
      attachments, [](const auto& attachment) { return beginsAsImage(headOf(attachment.path)); });
  return found == attachments.end() ? std::nullopt : std::optional(found->path);
}

std::optional<std::string> imageAddress(const std::vector<platform::NotificationAttachment>& attachments) {
  const auto file = imageFile(attachments);
  if (!file) return std::nullopt;
  const TextPtr path(g_canonicalize_filename(file->c_str(), nullptr));
  const TextPtr address(g_filename_to_uri(path.get(), nullptr, nullptr));
  return address ? std::optional<std::string>(address.get()) : std::nullopt;
}

}  // namespace VorselKelp::freedesktop
