#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/platform/URLSession.h"

namespace VorselKelp::posix {

/// Gathers the header lines of the last response: those of interim responses and of redirects before it are
/// dropped.
class ResponseHead {
 public:
  /// One line as it came over the wire. True when it begins another response.
  bool addLine(std::string_view line);
  /// The empty line that ends the headers has come.
  [[nodiscard]] bool isComplete() const { return complete_; }
  [[nodiscard]] std::vector<platform::HTTPHeader> takeHeaders() { return std::move(headers_); }
  [[nodiscard]] std::optional<std::string> suggestedFilename(std::string_view url) const;

 private:
  std::vector<platform::HTTPHeader> headers_;
  bool complete_ = false;
};

}  // namespace VorselKelp::posix
