// The gateway beside a server of HTTP/2 that answers the same requests with nothing.

#include <sys/resource.h>

#include <cstdio>

#include "gateway/GatewayDesk.h"
#include "support/Table.h"

namespace {

using namespace VorselKelp::benchmarks;

/// Figure and floor in turn, so that a slow moment of the machine falls on both.
std::pair<Measured, Measured> inTurn(int rounds, double GatewayDesk::Run::*part,
                                     GatewayDesk::Run (GatewayDesk::*run)(bool floor)) {
  GatewayDesk desk;
  std::vector<double> figures;
  std::vector<double> floors;
  for (int i = 0; i < rounds; ++i) {
    figures.push_back((desk.*run)(false).*part);
    floors.push_back((desk.*run)(true).*part);
    std::fputc('.', stderr);
  }
  return {Measured(std::move(figures)), Measured(std::move(floors))};
}

Line line(const char* figure, const char* unit, double goal, double GatewayDesk::Run::*part,
          GatewayDesk::Run (GatewayDesk::*run)(bool floor)) {
  const auto [value, floor] = inTurn(5, part, run);
  return {figure, unit, value, floor, goal};
}

Line fleet() {
  GatewayDesk desk;
  std::vector<double> times;
  for (int i = 0; i < 5; ++i) times.push_back(desk.fleet());
  return {
      "gateway: delivery into 10000 devices in memory, each", "us", Measured(times), 0, 0, Line::Goal::none};
}

}  // namespace

int main() {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
  using Desk = GatewayDesk;
  const std::vector<Line> lines{
      // At least a quarter as many.
      line("gateway: time for each request, as many as it takes", "us", 4, &Desk::Run::value,
           &Desk::throughput),
      line("gateway: 99th percentile at 10000 requests a second", "us", 2, &Desk::Run::value, &Desk::slowest),
      line("gateway: peak memory, 1000 connections of 100 streams", "MB", 1, &Desk::Run::peakMegabytes,
           &Desk::crowd),
      fleet()};
  std::fputc('\n', stderr);
  printTable(lines);
  return 0;
}
