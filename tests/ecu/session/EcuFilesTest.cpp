// SPDX-License-Identifier: MIT
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "base/XmlFile.h"
#include "ecu/session/EcuFiles.h"
#include "tests/ecu/session/SessionBench.h"
#include "tests/support/Await.h"
#include "tests/support/TempFolder.h"

namespace korval::ecu {
namespace {

base::XmlDocument File(const std::string& function) {
  return base::LoadXmlText(SessionBench::FileText(function), "ecu");
}

std::shared_ptr<const XmlEcuFile> Read(const std::string& path, base::XmlDocument document) {
  return std::make_shared<const XmlEcuFile>(path, base::FileStamp::Of(path), std::move(document));
}

TEST(EcuFilesTest, FileOfferedLastServesItsFunction) {
  EcuFiles files("");
  files.Offer(Read("a.xml", File("Name='ENGINE' Ecu='A'")));
  files.Offer(Read("b.xml", File("Name='ENGINE' Ecu='B'")));
  files.Offer(Read("c.xml", File("Name='ABS' Ecu='C'")));
  EXPECT_EQ(files.Find("ENGINE")->Function().ecu, "B");
  EXPECT_EQ(files.Find("ABS")->Function().ecu, "C");
  EXPECT_EQ(files.Find("GEARBOX"), nullptr);
}

TEST(EcuFilesTest, FileOfferedAgainUnchangedKeepsItsDescription) {
  const tests::TempFolder folder;
  folder.Write("a.xml", "1");
  EcuFiles files("");
  files.Offer(Read(folder.Path("a.xml"), File("Name='ENGINE'")));
  const auto first = files.Find("ENGINE");
  files.Offer(Read(folder.Path("a.xml"), File("Name='ENGINE'")));
  EXPECT_EQ(files.Find("ENGINE"), first);
  std::filesystem::last_write_time(folder.Path("a.xml"),
                                   std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
  files.Offer(Read(folder.Path("a.xml"), File("Name='ENGINE'")));
  EXPECT_NE(files.Find("ENGINE"), first);
}

// Written again so soon, or with its old time, that nothing but the content shows it.
TEST(EcuFilesTest, FileWhoseContentAloneHasChangedIsTaken) {
  EcuFiles files("");
  files.Offer(Read("a.xml", File("Name='ENGINE' Ecu='A'")));
  files.Offer(Read("a.xml", File("Name='ENGINE' Ecu='B'")));
  EXPECT_EQ(files.Find("ENGINE")->Function().ecu, "B");
}

// What this process has read from files so far.
std::uint64_t BytesRead() {
  std::ifstream counters("/proc/self/io");
  std::string name;
  std::uint64_t bytes = 0;
  counters >> name >> bytes;
  EXPECT_EQ(name, "rchar:");
  return bytes;
}

TEST(EcuFilesTest, FolderIsReadOnceForWhatItDoesNotHaveAndAgainWhereItChanged) {
  constexpr std::uint64_t kLarge = 1000000;
  const tests::TempFolder folder;
  const auto write = [&](const std::string& name, const std::string& function) {
    folder.Write(
        name, SessionBench::FileText("Name='" + function + "'") + "<!--" + std::string(kLarge, 'x') + "-->");
    std::filesystem::last_write_time(folder.Path(name),
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
  };
  for (const char* name : {"a", "b", "c"}) write(std::string(name) + ".xml", name);
  EcuFiles files(folder.Path());
  const auto read_for = [&](const std::string& function, bool found) {
    const std::uint64_t before = BytesRead();
    EXPECT_EQ(files.Find(function) != nullptr, found) << function;
    return BytesRead() - before;
  };
  EXPECT_LT(read_for("", false), kLarge);
  EXPECT_GT(read_for("GEARBOX", false), 3 * kLarge);
  EXPECT_LT(read_for("GEARBOX", false), kLarge);
  EXPECT_LT(read_for("ABS", false), kLarge);
  const std::uint64_t one = read_for("b", true);
  EXPECT_GT(one, kLarge);
  EXPECT_LT(one, 2 * kLarge);
  write("c.xml", "GEARBOX");
  const std::uint64_t changed = read_for("GEARBOX", true);
  EXPECT_GT(changed, kLarge);
  EXPECT_LT(changed, 2 * kLarge);
}

TEST(EcuFilesTest, FileWithoutFunctionIsRefused) {
  EcuFiles files("");
  EXPECT_THROW(files.Offer(Read("a.xml", base::LoadXmlText("<xml/>", "a.xml"))), base::Failure);
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
  files.Offer(Read("a.xml", File("Name='ENGINE' Ecu='offered'")));
  EXPECT_EQ(files.Find("ENGINE")->Function().ecu, "offered");
}

TEST(EcuFilesTest, FolderThatIsMissingHasNoFiles) {
  EcuFiles files("/nowhere/at/all");
  EXPECT_EQ(files.Find("ENGINE"), nullptr);
}

TEST(EcuFilesTest, SessionKeepsTheEcuObjectOfTheSameFileAndMakesOneForAnother) {
  SessionBench bench;
  const auto first = bench.Engine();
  bench.Offer("engine.xml", SessionBench::FileText("Name='ENGINE' Ecu='Engine control'"));
  EXPECT_EQ(bench.Engine(), first);
  bench.Offer("other.xml", SessionBench::FileText("Name='ENGINE' Ecu='Other'"));
  const auto second = bench.Engine();
  EXPECT_NE(second, first);
  EXPECT_EQ(second->Name(), "Other");
  EXPECT_EQ(bench.session->Ecus().size(), 1U);
  EXPECT_EQ(NumberOf([&] { tests::Await(first->Initialise()); }), 0);
  EXPECT_TRUE(first->Initialised());
}

}  // namespace
}  // namespace korval::ecu
