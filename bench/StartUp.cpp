// SPDX-License-Identifier: MIT
// From the start of the process to the trace line that says it listens, and the memory that stays resident
// with both example files selected and values read.
#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "bench/AsapClient.h"
#include "bench/BenchServer.h"
#include "bench/ExampleFiles.h"
#include "bench/Table.h"
#include "tests/system/Frames.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file
using Clock = std::chrono::steady_clock;

constexpr int kStarts = 20;
constexpr int kReadings = 2000;
constexpr double kMostMilliseconds = 10;
constexpr double kMostMegabytes = 16;

double StartOnce() {
  const Clock::time_point start = Clock::now();
  const bench::BenchServer server(bench::ExampleDescriptions(), bench::ExampleEcuFiles());
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double ResidentMegabytes() {
  const bench::BenchServer server(bench::ExampleDescriptions(), bench::ExampleEcuFiles());
  const bench::AsapClient client(server.Port());
  client.Begin();
  client.Select("abs.xml", "ABS");
  client.Acquire(client.Select("engine.xml", "ENGINE"),
                 {"Speed", "Coolant", "Throttle", "Battery", "Torque"});
  const std::string request = tests::Request(tests::kGetOnlineValue);
  for (int i = 0; i < kReadings; ++i) client.Ask(request);
  return server.ResidentMegabytes();
}

int Main() {
  std::vector<double> starts;
  for (int i = 0; i < kStarts; ++i) starts.push_back(StartOnce());
  const double start = bench::Median(starts);
  const double memory = ResidentMegabytes();
  bench::PrintTable({{"headless with the examples", "measured"},
                     {"start to listening", bench::Fixed(start, 1) + " ms"},
                     {"resident memory", bench::Fixed(memory, 1) + " MB"}});
  const bool quick = bench::Judge("start to listening", start, kMostMilliseconds, " ms");
  const bool small = bench::Judge("resident memory", memory, kMostMegabytes, " MB");
  return quick && small ? 0 : 1;
}

}  // namespace

int main() {
  try {
    return Main();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "start_up: %s\n", failure.what());
    return 2;
  }
}
