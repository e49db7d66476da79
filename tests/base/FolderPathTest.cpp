// SPDX-License-Identifier: MIT
#include <string>

#include <gtest/gtest.h>

#include "base/Failure.h"
#include "base/FolderPath.h"

namespace korval::base {
namespace {

using std::filesystem::path;

TEST(FolderPath, JoinsFolderAndName) {
  EXPECT_EQ(PathInFolder("/srv/asap", "engine.xml"), path("/srv/asap") / "engine.xml");
  EXPECT_EQ(PathInFolder("/srv/asap/", "engine.xml"), path("/srv/asap") / "engine.xml");
}

TEST(FolderPath, BothSeparatorsOfANameBecomeTheSystemsOwn) {
  const std::string expected = path("/srv/asap/a/b/engine.xml").make_preferred().string();
  EXPECT_EQ(PathInFolder("/srv/asap", "a\\b\\engine.xml").string(), expected);
  EXPECT_EQ(PathInFolder("/srv/asap", "a/b/engine.xml").string(), expected);
  EXPECT_EQ(PathInFolder("/srv/asap", "a\\b/engine.xml").string(), expected);
}

TEST(FolderPath, NamesBeyondAsciiStayUtf8) {
  EXPECT_TRUE(PathInFolder("/srv/asap", "mot\xC3\xA9ur.xml").generic_u8string() ==
              u8"/srv/asap/mot\u00E9ur.xml");
}

TEST(FolderPath, DotsInsideANameAreJustCharacters) {
  EXPECT_EQ(PathInFolder("/srv/asap", "a..b.xml"), path("/srv/asap") / "a..b.xml");
  EXPECT_EQ(PathInFolder("/srv/asap", "...xml"), path("/srv/asap") / "...xml");
}

TEST(FolderPath, NamesThatLeadOutOfTheFolderAreRefused) {
  for (const char* name :
       {"..", "../x.xml", "..\\x.xml", "a/../../x.xml", "a\\..\\..\\x.xml", "a/../..", "./../x.xml",
        "a/b/../../../x.xml", "a\\../..\\x.xml", "../asap2/x.xml", "..//x.xml"})
    EXPECT_THROW(PathInFolder("/srv/asap", name), Failure) << name;
}

TEST(FolderPath, AbsoluteNamesAreRefused) {
  for (const char* name : {"/etc/passwd", "\\etc\\passwd", "//host/share/x.xml", "\\\\host\\share\\x.xml",
                           "C:\\x.xml", "c:/x.xml", "C:x.xml", "C:"})
    EXPECT_THROW(PathInFolder("/srv/asap", name), Failure) << name;
}

TEST(FolderPath, EmptyNamesAndNamesWithANulAreRefused) {
  EXPECT_THROW(PathInFolder("/srv/asap", ""), Failure);
  EXPECT_THROW(PathInFolder("/srv/asap", std::string("engine.xml\0", 11)), Failure);
  EXPECT_THROW(PathInFolder("/srv/asap", std::string("\0engine.xml", 11)), Failure);
}

TEST(FolderPath, TheRefusalSaysWhichName) {
  try {
    PathInFolder("/srv/asap", "..\\secret.xml");
    FAIL() << "was not refused";
  } catch (const Failure& failure) {
    EXPECT_NE(failure.Description().find("..\\secret.xml"), std::string::npos) << failure.Description();
  }
}

}  // namespace
}  // namespace korval::base
