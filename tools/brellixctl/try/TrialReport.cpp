#include "brellixctl/try/TrialReport.h"

#include <algorithm>

#include "brellixctl/PlainText.h"

namespace brellixctl {

using VorselKelp::JSONAny;

namespace {

std::string inColumn(std::string text, std::size_t width) {
  text.resize(std::max(text.size() + 1, width), ' ');
  return text;
}

std::string partInWords(const TrialPart& part) {
  constexpr std::size_t verdictWidth = 9;
  std::size_t width = 0;
  for (const auto& line : part.lines) width = std::max(width, plainText(line.what).size() + 2);
  std::string words = '\n' + plainText(part.title) + '\n';
  words += "  " + std::string(verdictWidth + width, ' ') + "foretold | happened\n";
  for (const auto& line : part.lines)
    words += "  " + inColumn(line.ok ? "ok" : "differs", verdictWidth) +
             inColumn(plainText(line.what), width) + plainText(line.foretold) + " | " +
             plainText(line.happened) + '\n';
  return words;
}

JSONAny linesJSON(const std::vector<TrialLine>& lines) {
  JSONAny::List list;
  for (const auto& line : lines)
    list.push_back(JSONAny::Dictionary{
        {"what", line.what}, {"foretold", line.foretold}, {"happened", line.happened}, {"ok", line.ok}});
  return list;
}

std::string counted(std::size_t number, const char* one, const char* many) {
  return std::to_string(number) + (number == 1 ? one : many);
}

}  // namespace

std::size_t TrialReport::lineCount() const {
  std::size_t count = 0;
  for (const auto& part : parts) count += part.lines.size();
  return count;
}

std::size_t TrialReport::differences() const {
  std::size_t count = 0;
  for (const auto& part : parts)
    count += static_cast<std::size_t>(std::ranges::count(part.lines, false, &TrialLine::ok));
  return count;
}

std::string TrialReport::failure() const {
  const auto differing = differences();
  if (differing == 0) return {};
  return counted(differing, " thing of ", " things of ") + std::to_string(lineCount()) +
         " came otherwise than lint foretold";
}

JSONAny::Dictionary toJSON(const TrialReport& report) {
  JSONAny::Dictionary standIns;
  for (const auto& [origin, server] : report.standIns) standIns.push_back({origin, server});
  JSONAny::List parts;
  for (const auto& part : report.parts)
    parts.push_back(JSONAny::Dictionary{{"title", part.title}, {"lines", linesJSON(part.lines)}});
  return {{"payload", report.payload},
          {"standIns", std::move(standIns)},
          {"notes", JSONAny::List(report.notes.begin(), report.notes.end())},
          {"parts", std::move(parts)},
          {"compared", static_cast<std::int64_t>(report.lineCount())},
          {"differences", static_cast<std::int64_t>(report.differences())}};
}

std::string inWords(const TrialReport& report) {
  std::string words;
  for (const auto& [origin, server] : report.standIns)
    words += "For " + plainText(origin) + " a server on this machine answered, " + server + ".\n";
  for (const auto& note : report.notes) words += plainText(note) + '\n';
  for (const auto& part : report.parts) words += partInWords(part);
  if (report.differences() == 0)
    words += "\nAll " + std::to_string(report.lineCount()) + " things came as lint foretold.\n";
  return words;
}

}  // namespace brellixctl
