// SPDX-License-Identifier: MIT
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/TempFolder.h"
#include "window/SharedFolder.h"

namespace korval::apps {
namespace {

class SharedFolderTest : public ::testing::Test {
 protected:
  void Create(const std::string& path) const { std::filesystem::create_directories(folder_.Path(path)); }
  QString Found(const std::string& program_folder) const {
    return SharedFolder(QString::fromStdString(folder_.Path(program_folder)), "examples");
  }
  QString Path(const std::string& path) const { return QString::fromStdString(folder_.Path(path)); }

  tests::TempFolder folder_;
};

TEST_F(SharedFolderTest, AnInstalledProgramHasItAmongItsSharedFiles) {
  Create("usr/share/korval-asap-server/examples");
  EXPECT_EQ(Found("usr/bin"), Path("usr/share/korval-asap-server/examples"));
}

TEST_F(SharedFolderTest, ABuiltProgramHasItInTheBuildFolder) {
  Create("build/examples");
  EXPECT_EQ(Found("build/apps/server"), Path("build/examples"));
}

TEST_F(SharedFolderTest, TheInstalledOneComesFirst) {
  Create("usr/share/korval-asap-server/examples");
  Create("examples");
  EXPECT_EQ(Found("usr/bin"), Path("usr/share/korval-asap-server/examples"));
}

TEST_F(SharedFolderTest, IsEmptyWhereThereIsNone) { EXPECT_EQ(Found("usr/bin"), QString()); }

}  // namespace
}  // namespace korval::apps
