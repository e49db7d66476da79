// SPDX-License-Identifier: MIT
#include <array>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "parameters/CanFrames.h"

namespace korval::parameters {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string DocumentOf(const std::string& frame) {
  const auto read = ReadFrame(frame);
  return read ? CanDocumentText(std::array{*read}) : "refused";
}

TEST(CanFramesTest, SplitsAtEverySemicolonAndKeepsEmptyPieces) {
  EXPECT_THAT(SplitFrames(""), IsEmpty());
  EXPECT_THAT(SplitFrames("a"), ElementsAre("a"));
  EXPECT_THAT(SplitFrames("a;;b;"), ElementsAre("a", "", "b", ""));
}

TEST(CanFramesTest, WithoutFramesTheElementIsEmpty) {
  EXPECT_EQ(CanDocumentText({}), "<can><x i=\"0\"/></can>");
}

TEST(CanFramesTest, FramesStandAsPairsUnderOneElement) {
  const auto first = ReadFrame("0000012301020304");
  const auto second = ReadFrame("000007DF");
  ASSERT_TRUE(first && second);
  EXPECT_EQ(CanDocumentText(std::array{*first, *second}),
            "<can><x i=\"0\"><i>291</i><s><d>01020304</d></s><i>2015</i><s><d/></s></x></can>");
}

TEST(CanFramesTest, FrameNeedsEightCharactersAndWholeBytes) {
  for (const char* frame : {"", "0000012", "000001230", "00000123010"}) {
    EXPECT_EQ(DocumentOf(frame), "refused") << frame;
  }
}

TEST(CanFramesTest, IdentifierEndsWithTheFirstOtherCharacter) {
  EXPECT_EQ(DocumentOf("FFFFFFFF"), "<can><x i=\"0\"><i>-1</i><s><d/></s></x></can>");
  EXPECT_EQ(DocumentOf("80000000"), "<can><x i=\"0\"><i>-2147483648</i><s><d/></s></x></can>");
  EXPECT_EQ(DocumentOf("FFFFzFFF"), "<can><x i=\"0\"><i>65535</i><s><d/></s></x></can>");
  EXPECT_EQ(DocumentOf("zFFFFFFF"), "<can><x i=\"0\"><i>0</i><s><d/></s></x></can>");
  EXPECT_EQ(DocumentOf("-0000001"), "<can><x i=\"0\"><i>0</i><s><d/></s></x></can>");
  EXPECT_EQ(DocumentOf("0x000010"), "<can><x i=\"0\"><i>0</i><s><d/></s></x></can>");
}

TEST(CanFramesTest, DataIsTakenOverUnread) {
  EXPECT_EQ(DocumentOf("00000001aZ<&"), "<can><x i=\"0\"><i>1</i><s><d>aZ&lt;&amp;</d></s></x></can>");
}

TEST(CanFramesTest, CharactersCountNotBytes) {
  EXPECT_EQ(DocumentOf("\u00E90000001"), "<can><x i=\"0\"><i>0</i><s><d/></s></x></can>");
  EXPECT_EQ(DocumentOf("00000001\u00E9\u20AC"),
            "<can><x i=\"0\"><i>1</i><s><d>\u00E9\u20AC</d></s></x></can>");
  EXPECT_EQ(DocumentOf("00000001\u00E9"), "refused");
}

TEST(CanFramesTest, FrameWithANulIsRefused) {
  EXPECT_EQ(DocumentOf(std::string("00000001\0\0", 10)), "refused");
}

}  // namespace
}  // namespace korval::parameters
