// SPDX-License-Identifier: MIT
#include <chrono>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "base/Failure.h"
#include "base/XmlFileCache.h"
#include "tests/support/TempFolder.h"

namespace korval::base {
namespace {

class XmlFileCacheTest : public testing::Test {
 protected:
  // A file that was last written an hour ago.
  void WriteOld(const std::string& content, const std::string& name = "a.xml") const {
    folder_.Write(name, content);
    std::filesystem::last_write_time(folder_.Path(name),
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
  }
  XmlDocument Load() { return cache_.Load(folder_.Path("a.xml")); }
  static std::string Unit(const XmlDocument& document) {
    return document->child("Item").attribute("Unit").value();
  }

  tests::TempFolder folder_;
  XmlFileCache cache_;
};

TEST_F(XmlFileCacheTest, UnchangedFileIsTheSameDocument) {
  WriteOld("<Item Unit='V'/>");
  const XmlDocument first = Load();
  EXPECT_EQ(Load(), first);
}

TEST_F(XmlFileCacheTest, FileWrittenJustNowIsReadAgainAndSharedWhenItSaysTheSame) {
  folder_.Write("a.xml", "<Item Unit='V'><A b='1'>text</A></Item>");
  const XmlDocument first = Load();
  EXPECT_EQ(Load(), first);
  folder_.Write("a.xml", "<Item Unit='A'><A b='1'>text</A></Item>");
  EXPECT_EQ(Unit(Load()), "A");
  EXPECT_EQ(Unit(first), "V");
}

TEST_F(XmlFileCacheTest, FileReplacedByOneOfTheSameSizeAndTimeIsSeen) {
  WriteOld("<Item Unit='V'/>");
  const XmlDocument first = Load();
  const auto time = std::filesystem::last_write_time(folder_.Path("a.xml"));
  folder_.Write("b.xml", "<Item Unit='A'/>");
  std::filesystem::last_write_time(folder_.Path("b.xml"), time);
  std::filesystem::rename(folder_.Path("b.xml"), folder_.Path("a.xml"));
  EXPECT_EQ(Unit(Load()), "A");
}

TEST_F(XmlFileCacheTest, DocumentThatNobodyHoldsIsNotKept) {
  WriteOld("<Item Unit='V'/>");
  const std::weak_ptr<const pugi::xml_document> first = Load();
  EXPECT_TRUE(first.expired());
  EXPECT_EQ(Unit(Load()), "V");
}

TEST_F(XmlFileCacheTest, FileThatWentOrBrokeIsAFailureAndThenReadAgain) {
  WriteOld("<Item Unit='V'/>");
  const XmlDocument first = Load();
  folder_.Write("a.xml", "<Item");
  EXPECT_THROW(Load(), Failure);
  std::filesystem::remove(folder_.Path("a.xml"));
  EXPECT_THROW(Load(), Failure);
  WriteOld("<Item Unit='A'/>");
  EXPECT_EQ(Unit(Load()), "A");
}

bool AreSame(const std::string& one, const std::string& other) {
  return SameContent(*LoadXmlText(one, "one"), *LoadXmlText(other, "other"));
}

TEST(SameContentTest, BlanksAndCommentsBetweenElementsAreNoDifference) {
  EXPECT_TRUE(AreSame("<a><b c='1'/><d>e</d></a>", "<a>\n <b c='1'/><!-- f -->\n<d>e</d></a>"));
}

TEST(SameContentTest, EverythingElseIs) {
  const std::string text = "<a><b c='1'><x/></b><d>e</d></a>";
  for (const char* other :
       {"<a><b c='2'><x/></b><d>e</d></a>", "<a><b f='1'><x/></b><d>e</d></a>", "<a><b><x/></b><d>e</d></a>",
        "<a><b c='1' f='1'><x/></b><d>e</d></a>", "<a><b c='1'/><d>e</d></a>",
        "<a><b c='1'><x/><x/></b><d>e</d></a>", "<a><b c='1'><x/></b></a>",
        "<a><b c='1'><x/></b><d>e</d><d/></a>", "<a><b c='1'><x/></b><d>g</d></a>",
        "<a><b c='1'><x/></b><g>e</g></a>", "<a><b c='1'><x/><d>e</d></b></a>", "<a/>"}) {
    EXPECT_FALSE(AreSame(text, other)) << other;
    EXPECT_FALSE(AreSame(other, text)) << other;
  }
  EXPECT_TRUE(AreSame(text, text));
}

}  // namespace
}  // namespace korval::base
