#include "brellixctl/fleet/FleetSummary.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <map>

#include "brellixctl/PlainText.h"

namespace brellixctl {

using VorselKelp::JSONAny;

namespace {

struct Percentiles {
  float half = 0, ninety = 0, ninetyNine = 0, most = 0;  ///< milliseconds
};

Percentiles percentilesOf(std::vector<float> latencies) {
  if (latencies.empty()) return {};
  std::ranges::sort(latencies);
  // The smallest one that so many percent of all do not exceed.
  const auto at = [&](std::size_t percent) { return latencies[(latencies.size() * percent + 99) / 100 - 1]; };
  return {at(50), at(90), at(99), latencies.back()};
}

/// 0 where nothing happened.
double perSecond(std::size_t count, double seconds) {
  return seconds > 0 ? static_cast<double>(count) / seconds : 0;
}

/// A phase's kinds and, last, all of them together.
RequestMeter::Figures::value_type together(const FleetPhase& phase) {
  RequestFigures all;
  for (const auto& [kind, figures] : phase.requests) {
    for (const auto& [reason, count] : figures.failures) all.failures[reason] += count;
    all.latencies.insert(all.latencies.end(), figures.latencies.begin(), figures.latencies.end());
  }
  return {"all", std::move(all)};
}

template <class... Values>
std::string formatted(const char* format, Values... values) {
  std::array<char, 160> line{};
  std::snprintf(line.data(), line.size(), format, values...);
  return line.data();
}

std::string lineOf(const std::string& kind, const RequestFigures& figures, double seconds) {
  const auto p = percentilesOf(figures.latencies);
  auto line = formatted("  %-20s %9zu %7zu %9.0f", kind.c_str(), figures.count(), figures.failed(),
                        perSecond(figures.count(), seconds));
  for (const float value : {p.half, p.ninety, p.ninetyNine, p.most})
    line += figures.latencies.empty() ? "         -" : formatted(" %9.1f", static_cast<double>(value));
  return line + '\n';
}

std::string latencyLine(const char* from, const std::vector<float>& latencies) {
  auto line = formatted("  %-20s %9zu %17s", from, latencies.size(), "");
  const auto p = percentilesOf(latencies);
  for (const float value : {p.half, p.ninety, p.ninetyNine, p.most})
    line += latencies.empty() ? "         -" : formatted(" %9.1f", static_cast<double>(value));
  return line + '\n';
}

/// What came through a gateway.
std::string latenciesInWords(const CampaignWatch::Latencies& latencies) {
  std::string words;
  for (const auto& [name, what] : {std::pair("arrival", "first to arrival"),
                                   {"delivery", "arrival to screen"},
                                   {"tracker", "arrival to tracker"}}) {
    if (const auto found = latencies.find(name); found != latencies.end())
      words += latencyLine(what, found->second);
  }
  return words;
}

JSONAny countsJSON(const std::map<std::string, std::size_t>& counts) {
  JSONAny::Dictionary json;
  for (const auto& [name, count] : counts) json.push_back({name, static_cast<std::int64_t>(count)});
  return json;
}

JSONAny percentilesJSON(const std::vector<float>& latencies) {
  const auto p = percentilesOf(latencies);
  const auto milliseconds = [&](float value) {
    return latencies.empty() ? JSONAny() : JSONAny(static_cast<double>(value));
  };
  return JSONAny::Dictionary{{"p50", milliseconds(p.half)},
                             {"p90", milliseconds(p.ninety)},
                             {"p99", milliseconds(p.ninetyNine)},
                             {"max", milliseconds(p.most)}};
}

JSONAny latenciesJSON(const CampaignWatch::Latencies& latencies) {
  JSONAny::Dictionary json;
  for (const auto& [name, times] : latencies)
    json.push_back({name, JSONAny::Dictionary{{"count", static_cast<std::int64_t>(times.size())},
                                              {"milliseconds", percentilesJSON(times)}}});
  return json;
}

JSONAny jsonOf(const RequestFigures& figures, double seconds) {
  return JSONAny::Dictionary{{"count", static_cast<std::int64_t>(figures.count())},
                             {"failed", static_cast<std::int64_t>(figures.failed())},
                             {"failures", countsJSON(figures.failures)},
                             {"perSecond", perSecond(figures.count(), seconds)},
                             {"milliseconds", percentilesJSON(figures.latencies)}};
}

std::string failuresInWords(const FleetPhase& phase) {
  std::string words;
  for (const auto& [kind, figures] : phase.requests) {
    for (const auto& [reason, count] : figures.failures)
      words += "  " + std::to_string(count) + " failed: " + plainText(kind + ", " + reason) + '\n';
  }
  return words;
}

}  // namespace

bool anySuccess(const FleetPhase& phase) {
  return std::ranges::any_of(phase.requests, [](const auto& kind) { return !kind.second.latencies.empty(); });
}

std::string failureIn(const FleetSummary& summary, double percent) {
  std::size_t failed = 0, count = 0;
  std::string first;
  for (const auto& phase : summary.phases) {
    if (!phase.complete) return "The server stopped answering";
    for (const auto& [kind, figures] : phase.requests) {
      failed += figures.failed();
      count += figures.count();
      if (first.empty() && !figures.failures.empty()) first = kind + ", " + figures.failures.begin()->first;
    }
  }
  if (static_cast<double>(failed) * 100 <= percent * static_cast<double>(count)) return {};
  return std::to_string(failed) + " of " + std::to_string(count) + " requests failed, such as " + first;
}

std::string inWords(const FleetSummary& summary) {
  std::string words;
  for (const auto& phase : summary.phases) {
    words += formatted("%s: %zu in %.1f s, %.0f per second%s\n", phase.name.c_str(), phase.steps,
                       phase.seconds, perSecond(phase.steps, phase.seconds),
                       phase.complete ? "" : "; given up, for nothing was answered any more");
    words += formatted("  %-20s %9s %7s %9s %9s %9s %9s %9s\n", "requests", "count", "failed", "per s",
                       "p50 ms", "p90 ms", "p99 ms", "max ms");
    for (const auto& [kind, figures] : phase.requests) words += lineOf(kind, figures, phase.seconds);
    const auto all = together(phase);
    words += lineOf(all.first, all.second, phase.seconds) + latenciesInWords(phase.latencies) +
             failuresInWords(phase);
  }
  for (const auto& [origin, count] : summary.turned) {
    words += std::to_string(count) + " requests for " + plainText(origin) + " went to " +
             plainText(summary.server) + " instead; --anywhere lets them go there\n";
  }
  return words;
}

JSONAny::Dictionary toJSON(const FleetSummary& summary) {
  JSONAny::List list;
  for (const auto& phase : summary.phases) {
    JSONAny::Dictionary requests;
    for (const auto& [kind, figures] : phase.requests)
      requests.push_back({kind, jsonOf(figures, phase.seconds)});
    const auto all = together(phase);
    requests.push_back({all.first, jsonOf(all.second, phase.seconds)});
    JSONAny::Dictionary json{{"phase", phase.name},
                             {"steps", static_cast<std::int64_t>(phase.steps)},
                             {"seconds", phase.seconds},
                             {"complete", phase.complete},
                             {"requests", std::move(requests)}};
    if (!phase.latencies.empty()) json.push_back({"latencies", latenciesJSON(phase.latencies)});
    list.push_back(std::move(json));
  }
  return {{"phases", std::move(list)}, {"turnedToServer", countsJSON(summary.turned)}};
}

}  // namespace brellixctl
