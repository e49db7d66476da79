// SPDX-License-Identifier: MIT
// Select file on a generated ECU file of 10 MB with 50,000 data items, over TCP to the real server, against
// the XML parser alone reading the same file. The two are interleaved.
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include <pugixml.hpp>

#include "bench/AsapClient.h"
#include "bench/BenchServer.h"
#include "bench/ExampleFiles.h"
#include "bench/Table.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file
using Clock = std::chrono::steady_clock;

constexpr int kRounds = 30;
constexpr int kItems = 50000;
constexpr int kItemsARequest = 100;
constexpr int kMovingItems = 50;
constexpr int kDescribedItems = 100;
constexpr double kLimit = 1.5;

double Milliseconds(Clock::duration span) { return std::chrono::duration<double, std::milli>(span).count(); }

double ParseOnce(const std::string& path) {
  pugi::xml_document document;
  const Clock::time_point start = Clock::now();
  const bool parsed = document.load_file(path.c_str());
  const Clock::duration span = Clock::now() - start;
  if (!parsed) throw std::runtime_error("the generated ECU file cannot be parsed");
  return Milliseconds(span);
}

double SelectOnce(const bench::AsapClient& client) {
  client.Begin();
  const Clock::time_point start = Clock::now();
  client.Select("description.xml", "BENCH");
  const Clock::duration span = Clock::now() - start;
  client.Exit();
  return Milliseconds(span);
}

int Main() {
  const tests::TempFolder folder;
  folder.Write("description.xml", bench::DescriptionFile(kDescribedItems));
  folder.Write("bench.xml", bench::EcuFile(kItems, kItemsARequest, kMovingItems));
  const std::string path = folder.Path("bench.xml");
  const bench::BenchServer server(folder.Path(), folder.Path());
  const bench::AsapClient client(server.Port());

  std::vector<double> parse;
  std::vector<double> select;
  for (int round = 0; round < kRounds; ++round) {
    parse.push_back(ParseOnce(path));
    select.push_back(SelectOnce(client));
  }
  const double megabytes = static_cast<double>(std::filesystem::file_size(path)) / 1e6;
  bench::PrintTable({{"ECU file", "items", "select file ms", "parse ms", "select / parse"},
                     {bench::Fixed(megabytes, 1) + " MB", std::to_string(kItems),
                      bench::Fixed(bench::Median(select), 1), bench::Fixed(bench::Median(parse), 1),
                      bench::Fixed(bench::Median(select) / bench::Median(parse), 2)}});
  const double ratio = bench::Median(select) / bench::Median(parse);
  return bench::Judge("select file against the bare parse", ratio, kLimit, " times") ? 0 : 1;
}

}  // namespace

int main() {
  try {
    return Main();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "select_file: %s\n", failure.what());
    return 2;
  }
}
