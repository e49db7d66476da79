// SPDX-License-Identifier: MIT
// How much longer than a bare echo of the same bytes a command takes, over loopback. The exchanges with the
// server and with both echoes are interleaved, so that whatever slows the machine down slows them alike.
#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "bench/AsapClient.h"
#include "bench/BenchServer.h"
#include "bench/Connection.h"
#include "bench/Cores.h"
#include "bench/EchoProcess.h"
#include "bench/ExampleFiles.h"
#include "bench/Table.h"
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

// Where the scheduler puts two processes that take turns changes a round trip more than all else, so it is
// settled: the server and both echoes share a core.
struct Placement {
  std::string name;
  int server_core = 0;
  int client_core = 0;
};

struct Times {
  std::vector<double> server;
  std::vector<double> qt_echo;
  std::vector<double> plain_echo;
};

struct Case {
  std::string name;
  std::string request;
  std::size_t reply_size = 0;
  double limit = 0;
  Times times{};
};

double Microseconds(Clock::duration span) { return std::chrono::duration<double, std::micro>(span).count(); }

void Measure(const bench::Connection& wire, const std::string& request, std::string& reply,
             std::vector<double>& times) {
  for (int i = 0; i < kExchangesARound; ++i) {
    const Clock::time_point start = Clock::now();
    wire.Exchange(request, reply);
    times.push_back(Microseconds(Clock::now() - start));
  }
}

std::string Sizes(std::size_t request, std::size_t reply) {
  std::string greeting;
  for (const std::size_t size : {request, reply})
    greeting += tests::Word(static_cast<unsigned>(size >> 16)) + tests::Word(size & 0xFFFFU);
  return greeting;
}

void Run(Case& subject, const bench::Connection& server, const bench::EchoProcess& qt,
         const bench::EchoProcess& plain) {
  const bench::Connection qt_echo(qt.Port());
  const bench::Connection plain_echo(plain.Port());
  qt_echo.Send(Sizes(subject.request.size(), subject.reply_size));
  plain_echo.Send(Sizes(subject.request.size(), subject.reply_size));
  std::string reply(subject.reply_size, '\0');
  for (int round = -kWarmUpRounds; round < kRounds; ++round) {
    if (round == 0) subject.times = {};
    Measure(server, subject.request, reply, subject.times.server);
    Measure(qt_echo, subject.request, reply, subject.times.qt_echo);
    Measure(plain_echo, subject.request, reply, subject.times.plain_echo);
  }
}

Case GetParameter(const bench::AsapClient& client) {
  client.Begin();
  const unsigned lun = client.Select("engine.xml", "ENGINE");
  const std::string request =
      tests::Request(tests::kGetParameter, tests::Word(lun) + tests::Text("IdleSpeed"));
  return {"get parameter", request, client.Ask(request).size(), 1.15};
}

Case OnlineValues(const bench::AsapClient& client, int items) {
  client.Begin();
  const unsigned lun = client.Select("bench_description.xml", "BENCH");
  std::vector<std::string> names;
  for (int i = 0; i < items; ++i) names.push_back(bench::ItemName(i));
  client.Acquire(lun, names);
  const std::string request = tests::Request(tests::kGetOnlineValue);
  return {"online values, " + std::to_string(items) + " items", request, client.Ask(request).size(), 1.5};
}

std::vector<std::string> Row(const Case& subject) {
  const double server = bench::Median(subject.times.server);
  const double qt_echo = bench::Median(subject.times.qt_echo);
  const double plain_echo = bench::Median(subject.times.plain_echo);
  return {subject.name,
          std::to_string(subject.request.size()) + " / " + std::to_string(subject.reply_size),
          bench::Fixed(server, 1),
          bench::Fixed(qt_echo, 1),
          bench::Fixed(plain_echo, 1),
          bench::Fixed(server / qt_echo, 2),
          bench::Fixed(server / plain_echo, 2)};
}

// On one core, a server that blocks in the read of its only socket spares what every event loop pays: asking
// the system which socket is ready. That ratio is shown, but only a server of the same kind is a measure.
bool JudgeCase(const Placement& placement, const Case& subject) {
  const double server = bench::Median(subject.times.server);
  const bool kept = bench::Judge(subject.name + " against the Qt echo",
                                 server / bench::Median(subject.times.qt_echo), subject.limit, " times");
  if (placement.server_core == placement.client_core) return kept;
  return bench::Judge(subject.name + " against the plain echo",
                      server / bench::Median(subject.times.plain_echo), subject.limit, " times") &&
         kept;
}

bool Report(const Placement& placement, const std::vector<Case>& cases) {
  std::vector<std::vector<std::string>> rows{{placement.name, "bytes there / back", "server µs", "Qt echo µs",
                                              "plain echo µs", "server / Qt echo", "server / plain echo"}};
  for (const Case& subject : cases) rows.push_back(Row(subject));
  bench::PrintTable(rows);
  bool kept = true;
  for (const Case& subject : cases) kept = JudgeCase(placement, subject) && kept;
  std::puts("");
  return kept;
}

void CopyExamples(const tests::TempFolder& folder) {
  for (const std::string& from : {bench::ExampleDescriptions(), bench::ExampleEcuFiles()}) {
    const std::string name = from == bench::ExampleDescriptions() ? "asap" : "ecu";
    std::filesystem::copy(from, folder.Path(name), std::filesystem::copy_options::recursive);
  }
}

bool Compare(const Placement& placement) {
  bench::RunOnCore(placement.server_core);
  const bench::EchoProcess qt(bench::EchoProcess::Kind::kQt);
  const bench::EchoProcess plain(bench::EchoProcess::Kind::kPlain);
  const tests::TempFolder folder;
  CopyExamples(folder);
  folder.Write("asap/bench_description.xml", bench::DescriptionFile(kMostItems));
  folder.Write("ecu/bench.xml", bench::EcuFile(kMostItems, kItemsARequest, kMovingItems));
  const bench::BenchServer server(folder.Path("asap"), folder.Path("ecu"));
  bench::RunOnCore(placement.client_core);
  const bench::AsapClient client(server.Port());

  std::vector<Case> cases{GetParameter(client)};
  Run(cases.back(), client.Wire(), qt, plain);
  for (const int items : {10, 100, kMostItems}) {
    client.Exit();
    cases.push_back(OnlineValues(client, items));
    Run(cases.back(), client.Wire(), qt, plain);
  }
  return Report(placement, cases);
}

int Main() {
  const std::vector<int> usable = bench::UsableCores();
  bool kept = Compare({"client and server on one core", usable.front(), usable.front()});
  if (usable.size() > 1) {
    kept = Compare({"client and server on two cores", usable.front(), usable.back()}) && kept;
  }
  return kept ? 0 : 1;
}

}  // namespace

int main() {
  try {
    return Main();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "roundtrip: %s\n", failure.what());
    return 2;
  }
}
