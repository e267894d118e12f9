// The push agent beside a bare program on GDBus that does the least of its work.

#include <chrono>
#include <cstdio>

#include "agent/AgentDesk.h"
#include "support/ChildProcess.h"
#include "support/Table.h"

namespace {

using namespace VorselKelp::benchmarks;

/// Figure and floor in turn, so that a slow moment of the machine falls on both.
template <class Figure, class Floor>
std::pair<Measured, Measured> inTurn(int rounds, Figure figure, Floor floor) {
  std::vector<double> figures;
  std::vector<double> floors;
  for (int i = 0; i < rounds; ++i) {
    figures.push_back(figure());
    floors.push_back(floor());
    if (i % 10 == 0) std::fputc('.', stderr);
  }
  return {Measured(std::move(figures)), Measured(std::move(floors))};
}

Line running() {
  AgentDesk desk(AgentDesk::Manner::stay);
  for (const auto* receiver : {&desk.agent(), &desk.bare()}) desk.push(*receiver);
  const auto [value, floor] = inTurn(
      60, [&] { return desk.push(desk.agent()); }, [&] { return desk.push(desk.bare()); });
  return {"push on a desktop: Message to Notify, agent running", "us", value, floor, 1.4};
}

Line activated() {
  AgentDesk desk(AgentDesk::Manner::leave);
  const auto fresh = [&](const AgentDesk::Receiver& receiver) {
    desk.waitUntilGone(receiver);
    return desk.push(receiver);
  };
  const auto [value, floor] = inTurn(
      30, [&] { return fresh(desk.agent()); }, [&] { return fresh(desk.bare()); });
  return {"the same, agent not running", "us", value, floor, 1.4};
}

double megabytes(long kilobytes) {
  return static_cast<double>(kilobytes) / 1024;
}

Line idleMemory() {
  AgentDesk desk(AgentDesk::Manner::stay);
  std::vector<double> values;
  std::vector<double> floors;
  for (int i = 0; i < 5; ++i) {
    for (const auto* receiver : {&desk.agent(), &desk.bare()}) {
      desk.kill(*receiver);
      desk.push(*receiver);
      auto& samples = receiver == &desk.agent() ? values : floors;
      samples.push_back(megabytes(desk.kilobytes(*receiver, "smaps_rollup", "Private_Dirty")));
    }
  }
  return {"agent, Private_Dirty after one message",
          "MB",
          Measured(values),
          Measured(floors),
          1.5,
          Line::Goal::difference};
}

double bareExtensionRate(const AgentDesk& desk) {
  constexpr int runs = 200;
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < runs; ++i) runChild(desk.bareExtension(i));
  return runs / std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::pair<Line, Line> burst() {
  constexpr int count = 1000;
  AgentDesk desk(AgentDesk::Manner::keep);
  std::vector<double> rates;
  std::vector<double> floors;
  std::vector<double> peaks;
  std::vector<double> barePeaks;
  for (int i = 0; i < 3; ++i) {
    for (const auto* receiver : {&desk.agent(), &desk.bare()}) desk.kill(*receiver);
    floors.push_back(bareExtensionRate(desk));
    rates.push_back(count / desk.burst(desk.agent(), count, count));
    desk.burst(desk.bare(), count, 0);
    peaks.push_back(megabytes(desk.kilobytes(desk.agent(), "status", "VmHWM")));
    barePeaks.push_back(megabytes(desk.kilobytes(desk.bare(), "status", "VmHWM")));
  }
  // Time for each: at most 1 / 0.7 of what a bare extension takes one core.
  const auto inverse = [](std::vector<double> values) {
    for (double& value : values) value = 1e6 / value;
    return Measured(std::move(values));
  };
  return {{"burst of 1000 messages: time for each", "us", inverse(rates), inverse(floors), 1 / 0.7},
          {"burst of 1000 messages: peak memory", "MB", Measured(peaks), Measured(barePeaks), 2,
           Line::Goal::difference}};
}

}  // namespace

int main() {
  std::vector<Line> lines;
  lines.push_back(running());
  lines.push_back(activated());
  lines.push_back(idleMemory());
  const auto [time, memory] = burst();
  lines.push_back(time);
  lines.push_back(memory);
  std::fputc('\n', stderr);
  printTable(lines);
  return 0;
}
