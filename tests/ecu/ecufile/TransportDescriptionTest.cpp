// SPDX-License-Identifier: MIT
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "ecu/ecufile/FunctionReader.h"

namespace korval::ecu {
namespace {

TransportDescription Read(const std::string& attributes) {
  pugi::xml_document document;
  document.load_string(("<Function " + attributes + "/>").c_str());
  return ReadTransport(document.child("Function"));
}

TEST(TransportDescriptionTest, AttributesAsGiven) {
  const TransportDescription transport =
      Read("RequestId='7E0' ResponseId='18DAF110' Addressing='extended' Padding='AA' NBsMs='150' NCsUs='0'");
  EXPECT_EQ(transport.request_id, (CanIdentifier{0x7E0, false}));
  EXPECT_EQ(transport.response_id, (CanIdentifier{0x18DAF110, true}));
  EXPECT_EQ(transport.extended_addressing, true);
  EXPECT_EQ(transport.padding, 0xAA);
  EXPECT_EQ(transport.Value(&TransportDescription::n_bs_ms), 150);
  EXPECT_EQ(transport.n_cs_us, 0);
  EXPECT_EQ(transport.Value(&TransportDescription::n_cr_ms), 1000);
  EXPECT_EQ(Read("Padding='none'").padding, TransportDescription::kNoPadding);
}

TEST(TransportDescriptionTest, NumbersAtTheEndsOfTheirRangeAreTakenAndThoseBeyondAreLeftOpen) {
  for (const TransportParameter& parameter : kTransportParameters) {
    const auto read = [&](std::int32_t number) {
      return Read(parameter.attribute + ("='" + std::to_string(number) + "'")).*parameter.value;
    };
    EXPECT_EQ(read(parameter.lowest), parameter.lowest) << parameter.attribute;
    EXPECT_EQ(read(parameter.highest), parameter.highest) << parameter.attribute;
    EXPECT_FALSE(read(parameter.lowest - 1)) << parameter.attribute;
    EXPECT_FALSE(read(parameter.highest + 1)) << parameter.attribute;
  }
}

TEST(TransportDescriptionTest, WhatCannotBeIsLeftOpen) {
  for (const char* bad : {"RequestId='800'", "RequestId='20000000'", "RequestId='7G0'", "RequestId=''",
                          "Addressing='mixed'", "Padding='100'", "NAsMs='soon'"}) {
    const TransportDescription transport = Read(bad);
    EXPECT_FALSE(transport.request_id || transport.extended_addressing || transport.padding ||
                 transport.n_as_ms)
        << bad;
  }
}

TEST(TransportDescriptionTest, WhatOneFileLeavesOpenIsTakenFromTheOther) {
  const TransportDescription both =
      Read("RequestId='7E0' StMinMs='5'")
          .CompletedBy(Read("RequestId='740' ResponseId='760' StMinUs='500' BlockSize='8'"));
  EXPECT_EQ(both.request_id, (CanIdentifier{0x7E0, false}));
  EXPECT_EQ(both.response_id, (CanIdentifier{0x760, false}));
  EXPECT_EQ(both.block_size, 8);
  EXPECT_EQ(both.st_min_ms, 5);
  EXPECT_FALSE(both.st_min_us) << "one file says what the separation is";
}

// | `NAsMs` | N_As | 1000 | 1 to 60000 ms | ...
TEST(TransportDescriptionTest, ReferencePageHasSymbolDefaultRangeAndUnitOfEachParameter) {
  std::ifstream file(KORVAL_SOURCE_DIR "/docs/ecu-file.md");
  std::stringstream page;
  page << file.rdbuf();
  for (const TransportParameter& parameter : kTransportParameters) {
    std::string range = std::to_string(parameter.lowest) + " to " + std::to_string(parameter.highest);
    if (*parameter.unit != 0) range += std::string(" ") + parameter.unit;
    const std::string head = std::string("| `") + parameter.attribute + "` | " + parameter.symbol + " | ";
    const std::size_t row = page.str().find(head);
    ASSERT_NE(row, std::string::npos) << head;
    const std::string line = page.str().substr(row, page.str().find('\n', row) - row);
    EXPECT_NE(line.find(" | " + range + " | "), std::string::npos) << line;
    if (parameter.fallback) {
      EXPECT_EQ(line.find(std::to_string(*parameter.fallback) + " | "), head.size()) << line;
    }
  }
}

}  // namespace
}  // namespace korval::ecu
