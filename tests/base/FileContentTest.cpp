// SPDX-License-Identifier: MIT
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "base/FileContent.h"
#include "tests/support/NamedPipe.h"
#include "tests/support/TempFolder.h"

namespace korval::base {
namespace {

class FileContentTest : public ::testing::Test {
 protected:
  std::string Refusal(const std::string& name) const {
    try {
      ReadFile(folder_.Path(name), 10);
    } catch (const Failure& failure) {
      return failure.Description();
    }
    return "";
  }

  tests::TempFolder folder_;
};

TEST_F(FileContentTest, ReadsEveryByte) {
  const std::string content("a\0\r\n\xFF", 5);
  folder_.Write("file", content);
  EXPECT_EQ(ReadFile(folder_.Path("file"), 5), content);
  folder_.Write("empty", "");
  EXPECT_EQ(ReadFile(folder_.Path("empty"), 5), "");
}

TEST_F(FileContentTest, RefusesWhatIsNoFileThatCanBeRead) {
  if (!tests::MakeNamedPipe(folder_.Path("pipe"))) GTEST_SKIP() << "no pipes among the files";
  folder_.Write("large", "eleven byte");
  std::filesystem::create_directory(folder_.Path("folder"));
  std::filesystem::create_symlink(folder_.Path("pipe"), folder_.Path("to_pipe"));
  EXPECT_EQ(Refusal("none"),
            "File not found: " + folder_.Path("none") + " (check the folder and the file's name)");
  EXPECT_EQ(Refusal("large"), "File too large: " + folder_.Path("large") + " has more than 10 bytes");
  for (const char* const name : {"folder", "pipe", "to_pipe"})
    EXPECT_EQ(Refusal(name), "Not a file: " + folder_.Path(name));
}

}  // namespace
}  // namespace korval::base
