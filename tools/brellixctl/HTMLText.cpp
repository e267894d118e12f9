#include "brellixctl/HTMLText.h"

#include "VorselKelpSystem/NotificationRecords.h"

namespace brellixctl {

std::string escapedHTML(std::string_view text) {
  std::string html;
  for (const char c : VorselKelp::system::lossyText(text)) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      default:
        html += c;
    }
  }
  return html;
}

}  // namespace brellixctl
