// SPDX-License-Identifier: MIT
// How much longer a command takes with the window open and every value shown in it than without a window. The
// exchanges with both servers are interleaved, so that whatever slows the machine down slows them alike.
#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "bench/AsapClient.h"
#include "bench/BenchServer.h"
#include "bench/Cores.h"
#include "bench/ExampleFiles.h"
#include "bench/Table.h"
#include "bench/WindowProcess.h"
#include "tests/system/Frames.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file
using Clock = std::chrono::steady_clock;

constexpr int kRounds = 200;
constexpr int kExchangesARound = 25;
constexpr int kWarmUpRounds = 10;
constexpr int kMostItems = 1000;
constexpr int kItemsARequest = 50;
constexpr int kMovingItems = 20;
constexpr double kLimit = 1.3;

struct Case {
  std::string name;
  std::string request;
  std::vector<double> windowed{};
  std::vector<double> headless{};
};

void Measure(const bench::AsapClient& client, const std::string& request, std::string& reply,
             std::vector<double>& times) {
  for (int i = 0; i < kExchangesARound; ++i) {
    const Clock::time_point start = Clock::now();
    client.Wire().Exchange(request, reply);
    times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
  }
}

// Both clients have selected the same file, which has the same number in both servers.
void Run(Case& subject, const bench::AsapClient& windowed, const bench::AsapClient& headless) {
  std::string reply(windowed.Ask(subject.request).size(), '\0');
  for (int round = -kWarmUpRounds; round < kRounds; ++round) {
    if (round == 0) subject.windowed = subject.headless = {};
    Measure(windowed, subject.request, reply, subject.windowed);
    Measure(headless, subject.request, reply, subject.headless);
  }
}

unsigned Open(const bench::AsapClient& client, int items) {
  client.Begin();
  const unsigned lun = client.Select("bench_description.xml", "BENCH");
  std::vector<std::string> names;
  for (int i = 0; i < items; ++i) names.push_back(bench::ItemName(i));
  client.Acquire(lun, names);
  return lun;
}

bool Report(const std::vector<Case>& cases) {
  std::vector<std::vector<std::string>> rows{
      {"command", "windowed µs", "headless µs", "windowed / headless"}};
  bool kept = true;
  for (const Case& subject : cases) {
    const double windowed = bench::Median(subject.windowed);
    const double headless = bench::Median(subject.headless);
    rows.push_back({subject.name, bench::Fixed(windowed, 1), bench::Fixed(headless, 1),
                    bench::Fixed(windowed / headless, 2)});
  }
  bench::PrintTable(rows);
  for (const Case& subject : cases) {
    const double ratio = bench::Median(subject.windowed) / bench::Median(subject.headless);
    kept = bench::Judge(subject.name + " with the window open", ratio, kLimit, " times") && kept;
  }
  return kept;
}

int Main() {
  const std::vector<int> cores = bench::UsableCores();
  bench::RunOnCore(cores.front());
  const tests::TempFolder folder;
  folder.Write("bench_description.xml", bench::DescriptionFile(kMostItems));
  folder.Write("bench.xml", bench::EcuFile(kMostItems, kItemsARequest, kMovingItems));
  const bench::WindowProcess window(folder.Path(), folder.Path());
  const bench::BenchServer server(folder.Path(), folder.Path());
  bench::RunOnCore(cores.back());
  const bench::AsapClient windowed(window.Port());
  const bench::AsapClient headless(server.Port());

  std::vector<Case> cases;
  for (const int items : {10, 100, kMostItems}) {
    Open(windowed, items);
    const unsigned lun = Open(headless, items);
    if (cases.empty()) {
      cases.push_back({"get parameter", tests::Request(tests::kGetParameter,
                                                       tests::Word(lun) + tests::Text(bench::ItemName(0)))});
      Run(cases.back(), windowed, headless);
    }
    cases.push_back(
        {"online values, " + std::to_string(items) + " items", tests::Request(tests::kGetOnlineValue)});
    Run(cases.back(), windowed, headless);
    windowed.Exit();
    headless.Exit();
  }
  return Report(cases) ? 0 : 1;
}

}  // namespace

int main() {
  try {
    return Main();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "windowtrip: %s\n", failure.what());
    return 2;
  }
}
