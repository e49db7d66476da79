// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "model/KorvAsapFiles.h"

namespace korval::model {
namespace {

class KorvAsapFilesTest : public testing::Test {
 protected:
  Folders folders_{"/asap", "/korv"};
  KorvAsapFiles files_{folders_};
};

TEST_F(KorvAsapFilesTest, AddedFileCarriesWhatTheClientGave) {
  const auto file = files_.Add("engine.xml", "ENGINE", 16);
  EXPECT_EQ(file->Id(), 1);
  EXPECT_EQ(file->DescriptionFile(), "engine.xml");
  EXPECT_EQ(file->BinaryFile(), "ENGINE");
  EXPECT_EQ(file->Destination(), 16);
}

TEST_F(KorvAsapFilesTest, IdsCountUpAndStartAnewAfterClear) {
  EXPECT_EQ(files_.Add("a", "A", 0)->Id(), 1);
  EXPECT_EQ(files_.Add("b", "B", 0)->Id(), 2);
  EXPECT_EQ(files_.Add("c", "C", 0)->Id(), 3);
  files_.Clear();
  EXPECT_EQ(files_.Count(), 0);
  EXPECT_EQ(files_.Add("d", "D", 0)->Id(), 1);
}

TEST_F(KorvAsapFilesTest, ItemIdFindsTheFileOrNone) {
  files_.Add("a", "A", 0);
  const auto second = files_.Add("b", "B", 0);
  EXPECT_EQ(files_.ItemId(2), second);
  EXPECT_EQ(files_.ItemId(0), nullptr);
  EXPECT_EQ(files_.ItemId(3), nullptr);
  EXPECT_EQ(files_.ItemId(65535), nullptr);
}

TEST_F(KorvAsapFilesTest, RemovalRenumbersNothing) {
  files_.Add("a", "A", 0, "first");
  files_.Add("b", "B", 0);
  files_.Remove("first");
  EXPECT_EQ(files_.ItemId(1), nullptr);
  EXPECT_EQ(files_.Item(1)->Id(), 2);
  EXPECT_EQ(files_.Add("c", "C", 0)->Id(), 3);
}

TEST_F(KorvAsapFilesTest, PresentKeyRaisesAndUsesUpNoId) {
  files_.Add("a", "A", 0, "key");
  EXPECT_THROW(files_.Add("b", "B", 0, "key"), base::Failure);
  EXPECT_EQ(files_.Add("b", "B", 0)->Id(), 2);
}

TEST_F(KorvAsapFilesTest, IdsEndWithTheLargestWord) {
  for (int i = 0; i < 65535; ++i) files_.Add("", "", 0);
  EXPECT_THROW(files_.Add("", "", 0), base::Failure);
  EXPECT_EQ(files_.Count(), 65535);
}

}  // namespace
}  // namespace korval::model
