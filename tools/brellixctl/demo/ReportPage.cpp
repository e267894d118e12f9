#include "brellixctl/demo/ReportPage.h"

#include <array>
#include <cstdint>

#include "brellixctl/HTMLText.h"

namespace brellixctl {
namespace {

constexpr std::array<const char*, laneCount> laneNames{"User", "Application", "Service extension",
                                                       "Content extension", "Server"};
constexpr std::array<const char*, laneCount> laneWords{
    "who holds the phone", "the news application, with the library in it",
    "prepares each notification before it is shown", "draws the area below a notification",
    "remote configuration, reports, trackers, pictures"};

constexpr const char* head = R"HTML(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>The road of one notification</title>
<style>
body { margin: 0; font: 14px/1.45 system-ui, sans-serif; color: #1d2733; background: #f4f6f8; }
header { padding: 28px 32px 8px; max-width: 900px; }
h1 { margin: 0 0 8px; font-size: 26px; }
header p { margin: 0 0 10px; color: #46535f; }
.lanes { display: grid; grid-template-columns: 48px repeat(5, minmax(150px, 1fr)); gap: 0 10px; padding: 0 22px 60px; }
.lane { position: sticky; top: 0; z-index: 2; padding: 10px 12px; margin-bottom: 10px; border-radius: 0 0 10px 10px;
  background: #1b3a57; color: #fff; }
.lane b { display: block; }
.lane span { font-size: 12px; opacity: .8; }
.no { padding-top: 12px; text-align: right; color: #8a97a3; font-variant-numeric: tabular-nums; }
.card { margin: 5px 0; padding: 9px 12px; border-radius: 10px; background: #fff; box-shadow: 0 1px 3px #0002;
  overflow-wrap: anywhere; }
.card.act { border-left: 4px solid #2a7d4f; font-weight: 600; }
.card.failed { border-left: 4px solid #c0392b; }
.card.kept { background: #fdf8e8; }
.card.said { background: #eef1f4; }
.card p { margin: 3px 0 0; font-weight: 400; color: #46535f; }
.arrow { position: relative; margin: 4px 0; padding: 6px 18px 6px 10px; border-bottom: 2px solid #2f6fab;
  color: #1d4f7e; font: 12.5px/1.35 ui-monospace, monospace; overflow-wrap: anywhere; }
.arrow span { margin-left: 10px; color: #6b7885; font: 12.5px system-ui, sans-serif; }
.arrow::after { content: ""; position: absolute; right: 0; bottom: -6px; border: 5px solid transparent;
  border-left: 9px solid #2f6fab; }
details { margin-top: 4px; font-weight: 400; }
summary { cursor: pointer; color: #2f6fab; font: 12px system-ui, sans-serif; }
pre { margin: 6px 0 0; padding: 8px; max-height: 260px; overflow: auto; border-radius: 6px; background: #f2f4f6;
  font: 11.5px/1.4 ui-monospace, monospace; white-space: pre-wrap; overflow-wrap: anywhere; color: #1d2733; }
img { display: block; width: 100%; max-width: 260px; margin-top: 6px; border: 1px solid #d5dbe1; border-radius: 10px; }
@media print { .lane { position: static; } pre { max-height: none; } }
</style>
</head>
<body>
<header>
<h1>The road of one notification</h1>
<p>Time runs downwards. Each column is somebody who takes part; a blue arrow is a request to the server. The
application and its two extensions are processes of their own that share nothing but a small store, whose changes
stand on yellow cards. Every process that you see here really ran, and every request was really received.</p>
</header>
<div class="lanes">
)HTML";

std::string base64(std::string_view bytes) {
  constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      const bool padding = i + k > bytes.size();
      text += padding ? '=' : alphabet[group >> (18 - 6 * k) & 63];
    }
  }
  return text;
}

constexpr std::string_view valuesWord = "the values";

std::string folded(const std::string& text, std::string_view what) {
  if (text.empty()) return {};
  constexpr std::size_t shortText = 700;
  const char* open =
      text.size() <= shortText && what == valuesWord ? "<details open><summary>" : "<details><summary>";
  return std::string(open) + std::string(what) + "</summary><pre>" + escapedHTML(text) + "</pre></details>";
}

std::string imageType(std::string_view bytes) {
  if (bytes.starts_with("GIF8")) return "image/gif";
  return bytes.starts_with("\xff\xd8") ? "image/jpeg" : "image/png";
}

std::string column(Lane from, Lane to) {
  const auto a = static_cast<int>(from) + 2;
  const auto b = static_cast<int>(to) + 2;
  return "grid-column:" + std::to_string(std::min(a, b)) + "/" + std::to_string(std::max(a, b) + 1);
}

std::string cardOf(const Happening& happening) {
  const bool said = happening.title == "Console";
  const bool kept = !happening.text.empty() && !said;
  std::string kind = !happening.ok ? " failed" : said ? " said" : kept ? " kept" : "";
  if (kind.empty() && happening.pictures.empty()) kind = " act";
  std::string html = "<div class=\"card" + kind + "\" style=\"" + column(happening.lane, happening.lane) +
                     "\">" + escapedHTML(happening.title);
  if (!happening.detail.empty()) html += "<p>" + escapedHTML(happening.detail) + "</p>";
  for (const auto& picture : happening.pictures) {
    html += "<img alt=\"" + escapedHTML(happening.title) + "\" src=\"data:" + imageType(picture) +
            ";base64," + base64(picture) + "\">";
  }
  return html + folded(happening.text, said ? "what it wrote" : valuesWord) + "</div>\n";
}

std::string arrowOf(const Happening& happening) {
  return "<div class=\"arrow\" style=\"" + column(happening.lane, *happening.to) + "\">" +
         escapedHTML(happening.title) + "<span>" + escapedHTML(happening.detail) + "</span>" +
         folded(happening.text, "the body") + "</div>\n";
}

}  // namespace

std::string reportPage(const std::vector<Happening>& happenings) {
  std::string html = head;
  html += "<div></div>";
  for (std::size_t lane = 0; lane < laneCount; ++lane) {
    html += std::string("<div class=\"lane\"><b>") + laneNames[lane] + "</b><span>" + laneWords[lane] +
            "</span></div>\n";
  }
  int number = 0;
  for (const auto& happening : happenings) {
    html += "<div class=\"no\" style=\"grid-column:1\">" + std::to_string(++number) + "</div>";
    html += happening.to ? arrowOf(happening) : cardOf(happening);
  }
  return html + "</div>\n</body>\n</html>\n";
}

}  // namespace brellixctl
