// SPDX-License-Identifier: MIT
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "ecu/ecufile/FunctionReader.h"

namespace korval::ecu {
namespace {

Timing Read(const std::string& attributes) {
  pugi::xml_document document;
  document.load_string(("<Function " + attributes + "/>").c_str());
  return ReadTiming(document.child("Function"));
}

TEST(TimingTest, EveryParameterIsReadAndOpenWithoutItsAttribute) {
  for (const TimingParameter& parameter : kTimingParameters) {
    EXPECT_FALSE(Read("").*parameter.value) << parameter.attribute;
    EXPECT_EQ(Read("").Value(parameter.value), Milliseconds(parameter.fallback)) << parameter.attribute;
    const Timing timing =
        Read(std::string(parameter.attribute) + "='" + std::to_string(parameter.highest) + "'");
    EXPECT_EQ(timing.Value(parameter.value), Milliseconds(parameter.highest)) << parameter.attribute;
  }
}

TEST(TimingTest, ValuesOutOfRangeAndOtherTextsCountAsAbsent) {
  for (const TimingParameter& parameter : kTimingParameters) {
    for (const std::string& text :
         {std::to_string(parameter.lowest - 1), std::to_string(parameter.highest + 1), std::string("soon"),
          std::string("1.5"), std::string()}) {
      EXPECT_FALSE(Read(std::string(parameter.attribute) + "='" + text + "'").*parameter.value)
          << parameter.attribute << " " << text;
    }
  }
}

// | `P1Ms` | P1max | 20 | 1 to 1000 ms | ...
TEST(TimingTest, ReferencePageHasSymbolDefaultRangeAndUnitOfEachParameter) {
  std::ifstream file(KORVAL_SOURCE_DIR "/docs/ecu-file.md");
  std::stringstream page;
  page << file.rdbuf();
  for (const TimingParameter& parameter : kTimingParameters) {
    const std::string symbol = *parameter.symbol == 0 ? "| |" : std::string("| ") + parameter.symbol + " |";
    const std::string row = std::string("| `") + parameter.attribute + "` " + symbol + " " +
                            std::to_string(parameter.fallback) + " | " + std::to_string(parameter.lowest) +
                            " to " + std::to_string(parameter.highest) + " ms | ";
    EXPECT_NE(page.str().find("\n" + row), std::string::npos) << row;
  }
}

}  // namespace
}  // namespace korval::ecu
