// SPDX-License-Identifier: MIT
#include <chrono>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "base/Failure.h"
#include "base/XmlFile.h"
#include "ecu/description/ErrorNumbers.h"
#include "ecu/session/EcuFiles.h"
#include "tests/ecu/session/SessionBench.h"
#include "tests/support/TempFolder.h"

namespace korval::ecu {
namespace {

base::XmlDocument File(const std::string& function) {
  return base::LoadXmlText(SessionBench::FileText(function), "ecu");
}

TEST(EcuFilesTest, FileOfferedLastServesItsFunction) {
  EcuFiles files("");
  files.Offer("a.xml", File("Name='ENGINE' Ecu='A'"));
  files.Offer("b.xml", File("Name='ENGINE' Ecu='B'"));
  files.Offer("c.xml", File("Name='ABS' Ecu='C'"));
  EXPECT_EQ(files.Find("ENGINE")->Function().ecu, "B");
  EXPECT_EQ(files.Find("ABS")->Function().ecu, "C");
  EXPECT_EQ(files.Find("GEARBOX"), nullptr);
}

TEST(EcuFilesTest, FileOfferedAgainUnchangedKeepsItsDescription) {
  const tests::TempFolder folder;
  folder.Write("a.xml", "1");
  EcuFiles files("");
  files.Offer(folder.Path("a.xml"), File("Name='ENGINE'"));
  const auto first = files.Find("ENGINE");
  files.Offer(folder.Path("a.xml"), File("Name='ENGINE'"));
  EXPECT_EQ(files.Find("ENGINE"), first);
  std::filesystem::last_write_time(folder.Path("a.xml"),
                                   std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
  files.Offer(folder.Path("a.xml"), File("Name='ENGINE'"));
  EXPECT_NE(files.Find("ENGINE"), first);
}

TEST(EcuFilesTest, FileWithoutFunctionIsRefused) {
  EcuFiles files("");
  EXPECT_THROW(files.Offer("a.xml", base::LoadXmlText("<xml/>", "a.xml")), base::Failure);
}

TEST(EcuFilesTest, FolderIsSearchedForWhatWasNotOfferedAndUnreadableFilesAreSkipped) {
  const tests::TempFolder folder;
  folder.Write("0.xml", "<xml><damaged>");
  folder.Write("1.xml", "");
  folder.Write("2.xml", "<xml/>");
  folder.Write("3.txt", SessionBench::FileText("Name='GEARBOX'"));
  folder.Write("4.xml", SessionBench::FileText("Name='ENGINE' Ecu='of the folder'"));
  folder.Write("5.xml", SessionBench::FileText("Name='ENGINE' Ecu='second'"));
  std::filesystem::create_directory(folder.Path("6.xml"));
  EcuFiles files(folder.Path());
  ASSERT_NE(files.Find("ENGINE"), nullptr);
  EXPECT_EQ(files.Find("ENGINE")->Function().ecu, "of the folder");
  EXPECT_EQ(files.Find("GEARBOX"), nullptr);
  files.Offer("a.xml", File("Name='ENGINE' Ecu='offered'"));
  EXPECT_EQ(files.Find("ENGINE")->Function().ecu, "offered");
}

TEST(EcuFilesTest, FolderThatIsMissingHasNoFiles) {
  EcuFiles files("/nowhere/at/all");
  EXPECT_EQ(files.Find("ENGINE"), nullptr);
}

TEST(EcuFilesTest, SessionKeepsTheEcuObjectOfTheSameFileAndMakesOneForAnother) {
  SessionBench bench;
  const auto first = bench.Engine();
  bench.Offer("engine.xml", SessionBench::FileText("Name='ENGINE'"));
  EXPECT_EQ(bench.Engine(), first);
  bench.Offer("other.xml", SessionBench::FileText("Name='ENGINE' Ecu='Other'"));
  const auto second = bench.Engine();
  EXPECT_NE(second, first);
  EXPECT_EQ(second->Name(), "Other");
  EXPECT_EQ(bench.session->Ecus().size(), 1U);
  EXPECT_EQ(NumberOf([&] { first->Initialise(); }), 0);
  EXPECT_TRUE(first->Initialised());
}

}  // namespace
}  // namespace korval::ecu
