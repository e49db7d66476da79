// SPDX-License-Identifier: MIT
// Runs the worked example of docs/ecu-file.md, so that the page stays true.
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/ecu/session/SessionBench.h"
#include "tests/support/Await.h"

namespace korval::ecu {
namespace {

std::string FirstXmlOfThePage() {
  std::ifstream file(KORVAL_SOURCE_DIR "/docs/ecu-file.md");
  std::stringstream page;
  page << file.rdbuf();
  const std::string text = page.str();
  const std::string opening = "```xml\n";
  const std::size_t begin = text.find(opening) + opening.size();
  return text.substr(begin, text.find("```", begin) - begin);
}

TEST(ReferenceExampleTest, BytesAndValuesAreThoseOfThePage) {
  SessionBench bench;
  bench.Offer("example.xml", FirstXmlOfThePage());
  ASSERT_NE(bench.Request("READ_ENGINE"), nullptr);
  EXPECT_EQ(bench.Send("2101"), "61010C808202");
  tests::Await(bench.Request("READ_ENGINE")->Execute());
  EXPECT_EQ(bench.Item("READ_ENGINE", "EngineSpeed")->Value(), base::Variant(800.0));
  EXPECT_EQ(bench.Item("READ_ENGINE", "CoolantTemp")->Value(), base::Variant(90.0));
  EXPECT_EQ(bench.Item("READ_ENGINE", "CoolantTemp")->Unit(), "\u00B0C");
  EXPECT_EQ(bench.Item("READ_ENGINE", "EngineState")->Value(), base::Variant(std::int32_t{2}));
  EXPECT_EQ(bench.Item("READ_ENGINE", "EngineState")->Text(), "running");
  EXPECT_EQ(bench.Item("WRITE_IDLE", "IdleSpeed")->Text(), "850");
  EXPECT_EQ(bench.Send("3B1055"), "7B10");
}

}  // namespace
}  // namespace korval::ecu
