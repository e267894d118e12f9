#include "brellixctl/HTMLText.h"
#include "brellixctl/try/TrialReport.h"

namespace brellixctl {
namespace {

constexpr const char* pageHead = R"HTML(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>What a payload does</title>
<style>
body { margin: 0; padding: 28px 32px 60px; font: 14px/1.45 system-ui, sans-serif; color: #1d2733; background: #f4f6f8; }
h1 { margin: 0 0 8px; font-size: 26px; }
p { margin: 0 0 10px; max-width: 900px; color: #46535f; overflow-wrap: anywhere; }
.verdict { display: inline-block; padding: 8px 14px; border-radius: 10px; background: #2a7d4f; color: #fff; }
.verdict.differs { background: #c0392b; }
table { width: 100%; margin: 18px 0 0; border-collapse: collapse; table-layout: fixed; background: #fff;
  border-radius: 10px; box-shadow: 0 1px 3px #0002; overflow: hidden; }
caption { padding: 10px 12px; border-radius: 10px 10px 0 0; background: #1b3a57; color: #fff; font-weight: 600;
  text-align: left; overflow-wrap: anywhere; }
th { padding: 6px 12px; color: #6b7885; font-weight: 400; text-align: left; }
td { padding: 6px 12px; border-top: 1px solid #e4e8ec; vertical-align: top; overflow-wrap: anywhere; }
th:first-child { width: 70px; }
th:nth-child(2) { width: 20%; }
tr.differs td { background: #fdecea; }
tr td:first-child { color: #2a7d4f; }
tr.differs td:first-child { color: #c0392b; font-weight: 600; }
@media print { table { box-shadow: none; } }
</style>
</head>
<body>
)HTML";

std::string tableOf(const TrialPart& part) {
  std::string html = "<table>\n<caption>" + escapedHTML(part.title) +
                     "</caption>\n<tr><th></th><th></th><th>foretold</th><th>happened</th></tr>\n";
  for (const auto& line : part.lines) {
    html += line.ok ? "<tr><td>ok</td>" : "<tr class=\"differs\"><td>differs</td>";
    for (const auto* text : {&line.what, &line.foretold, &line.happened})
      html += "<td>" + escapedHTML(*text) + "</td>";
    html += "</tr>\n";
  }
  return html + "</table>\n";
}

}  // namespace

std::string trialPage(const TrialReport& report) {
  const auto failure = report.failure();
  std::string html = pageHead;
  html += "<h1>" + escapedHTML(report.payload) + "</h1>\n<p class=\"verdict";
  html += failure.empty() ? "\">All " + std::to_string(report.lineCount()) + " things came as lint foretold"
                          : " differs\">" + escapedHTML(failure);
  html += "</p>\n";
  for (const auto& note : report.notes) html += "<p>" + escapedHTML(note) + "</p>\n";
  for (const auto& [origin, address] : report.standIns)
    html += "<p>For " + escapedHTML(origin) + " a server on this machine answered, " + escapedHTML(address) +
            ".</p>\n";
  for (const auto& part : report.parts) html += tableOf(part);
  return html + "</body>\n</html>\n";
}

}  // namespace brellixctl
