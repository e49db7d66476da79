// SPDX-License-Identifier: MIT
#include <string>

#include <gtest/gtest.h>

#include "base/XmlFile.h"
#include "ecu/ecufile/EcuFile.h"
#include "ecu/isotp/IsoTpParameters.h"

namespace korval::ecu {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

std::optional<IsoTpParameters> Parameters(const std::string& attributes) {
  const auto file = ReadEcuFile(base::LoadXmlText(
      "<xml><qor:Target><Function Name='F' Address='28' Tester='F2' " + attributes + "/></qor:Target></xml>",
      "f"));
  return IsoTpParameters::OfTester(file->Function(), file->Function().Can());
}

constexpr char kIdentifiers[] = "RequestId='7E0' ResponseId='7E8' ";

TEST(IsoTpParametersTest, FileThatSaysNothingElseHasTheStandardsTimes) {
  const auto parameters = Parameters(kIdentifiers);
  ASSERT_TRUE(parameters);
  EXPECT_EQ(parameters->transmit, (CanIdentifier{0x7E0, false}));
  EXPECT_EQ(parameters->receive, (CanIdentifier{0x7E8, false}));
  for (const auto timeout : {parameters->n_as, parameters->n_ar, parameters->n_bs, parameters->n_cr}) {
    EXPECT_EQ(timeout, milliseconds(1000));
  }
  EXPECT_EQ(parameters->n_br, milliseconds(0));
  EXPECT_FALSE(parameters->separation);
  EXPECT_EQ(parameters->most_waits, 10);
  EXPECT_EQ(parameters->block_size, 0);
  EXPECT_EQ(parameters->st_min, microseconds(0));
  EXPECT_EQ(parameters->longest_message, 4095U);
  EXPECT_EQ(parameters->padding, 0x55);
  EXPECT_FALSE(parameters->transmit_target);
}

TEST(IsoTpParametersTest, EveryAttributeHasItsParameter) {
  const auto parameters = Parameters(
      std::string(kIdentifiers) +
      "NAsMs='1' NArMs='2' NBsMs='3' NBrMs='4' NCrMs='5' NCsUs='600' MostWaits='7' BlockSize='8' StMinMs='9' "
      "LongestMessage='5000' Padding='00'");
  ASSERT_TRUE(parameters);
  EXPECT_EQ(parameters->n_as, milliseconds(1));
  EXPECT_EQ(parameters->n_ar, milliseconds(2));
  EXPECT_EQ(parameters->n_bs, milliseconds(3));
  EXPECT_EQ(parameters->n_br, milliseconds(4));
  EXPECT_EQ(parameters->n_cr, milliseconds(5));
  EXPECT_EQ(parameters->separation, microseconds(600));
  EXPECT_EQ(parameters->most_waits, 7);
  EXPECT_EQ(parameters->block_size, 8);
  EXPECT_EQ(parameters->st_min, milliseconds(9));
  EXPECT_EQ(parameters->longest_message, 5000U);
  EXPECT_EQ(parameters->padding, 0x00);
  EXPECT_EQ(Parameters(std::string(kIdentifiers) + "StMinUs='300' StMinMs='9'")->st_min, microseconds(300));
  EXPECT_FALSE(Parameters(std::string(kIdentifiers) + "Padding='none'")->padding);
}

TEST(IsoTpParametersTest, ExtendedAddressingHasTheAddressesOfBothAndTheOtherSideSeesThemSwapped) {
  const auto tester = Parameters(std::string(kIdentifiers) + "Addressing='extended'");
  ASSERT_TRUE(tester);
  EXPECT_EQ(tester->transmit_target, 0x28);
  EXPECT_EQ(tester->receive_target, 0xF2);
  EXPECT_EQ(tester->TransmitCapacity(), 7U);
  const IsoTpParameters ecu = tester->OfOtherSide();
  EXPECT_EQ(ecu.transmit, tester->receive);
  EXPECT_EQ(ecu.receive, tester->transmit);
  EXPECT_EQ(ecu.transmit_target, 0xF2);
  EXPECT_EQ(ecu.receive_target, 0x28);
}

TEST(IsoTpParametersTest, WithoutBothIdentifiersThereAreNone) {
  EXPECT_FALSE(Parameters(""));
  EXPECT_FALSE(Parameters("RequestId='7E0'"));
  EXPECT_FALSE(Parameters("ResponseId='7E8'"));
}

}  // namespace
}  // namespace korval::ecu
