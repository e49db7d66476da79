// SPDX-License-Identifier: MIT
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "QtTest.h"
#include "base/Failure.h"
#include "platform/QSettingsStore.h"
#include "tests/support/TempFolder.h"

namespace korval::platform {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

std::string Rest(std::istream& stream) { return {std::istreambuf_iterator<char>(stream), {}}; }

class QSettingsStoreTest : public QtTest {
 protected:
  std::unique_ptr<QSettingsStore> Open(const std::string& user = "user.ini") {
    return std::make_unique<QSettingsStore>(
        QString::fromStdString(folder_.Path(user)), QString::fromStdString(folder_.Path("machine.ini")),
        [this](const std::string& text) { reports_.push_back(text); }, std::chrono::milliseconds(0));
  }
  std::string Content(const std::string& name) const {
    std::ifstream file(folder_.Path(name), std::ios::binary);
    return Rest(file);
  }

  tests::TempFolder folder_;
  std::vector<std::string> reports_;
};

TEST_F(QSettingsStoreTest, HasNothingWhenThereAreNoFiles) {
  const auto store = Open();
  EXPECT_EQ(store->Read("KorvalAsapServer/Properties/tcpipPort"), std::nullopt);
  EXPECT_EQ(store->ReadMachineWide("QOR/DoNotUseWeb"), std::nullopt);
  EXPECT_THAT(reports_, IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(folder_.Path("user.ini")));
}

TEST_F(QSettingsStoreTest, ReadsWhatWasWrittenByHand) {
  folder_.Write("user.ini",
                "; the bench in hall 3\n"
                "[KorvalAsapServer]\nProperties\\Settings=9600,n,8,1\nProperties\\tcpipPort = 1002\n"
                "Properties\\AsapFolder=/srv/pr\xC3\xBC"
                "fstand\n[QOR]\nGeneral\\CommPort=CAN:socketcan:can0\n"
                "Hardware\\InstanceName=\n");
  folder_.Write("machine.ini", "[QOR]\nDoNotUseWeb=\"1 \"\nInstallFolder=/opt/qor\n");
  const auto store = Open();
  EXPECT_EQ(store->Read("KorvalAsapServer/Properties/Settings"), "9600,n,8,1");
  EXPECT_EQ(store->Read("KorvalAsapServer/Properties/tcpipPort"), "1002");
  EXPECT_EQ(store->Read("KorvalAsapServer/Properties/AsapFolder"),
            "/srv/pr\xC3\xBC"
            "fstand");
  EXPECT_EQ(store->Read("QOR/General/CommPort"), "CAN:socketcan:can0");
  EXPECT_EQ(store->Read("QOR/Hardware/InstanceName"), "");
  EXPECT_EQ(store->ReadMachineWide("QOR/DoNotUseWeb"), "1 ");
  EXPECT_EQ(store->ReadMachineWide("QOR/InstallFolder"), "/opt/qor");
  EXPECT_EQ(store->ReadMachineWide("QOR/General/CommPort"), std::nullopt);
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(QSettingsStoreTest, WritesTheKeysThatPeopleKnow) {
  Open()->Write("KorvalAsapServer/Properties/tcpipPort", "1002");
  Open()->Write("QOR/General/CommPort", "SIM");
  EXPECT_EQ(Content("user.ini"),
            "[KorvalAsapServer]\nProperties\\tcpipPort=1002\n\n[QOR]\nGeneral\\CommPort=SIM\n");
}

TEST_F(QSettingsStoreTest, KnowsWhatItHasWrittenHoweverManyEventsGoBy) {
  const auto store = Open();
  store->Write("QOR/General/CommPort", "SIM");
  RunQueuedEvents();
  EXPECT_EQ(store->Read("QOR/General/CommPort"), "SIM");
}

TEST_F(QSettingsStoreTest, GivesEveryTextBackAsItWasWritten) {
  for (const char* text : {"9600,E,8,1", "", " blanks ", "C:\\bench\\asap", "a;b#c", "\"quoted\"",
                           "@Invalid()", "@x", "\xE2\x82\xAC", "100%", "[section]", "a=b"}) {
    Open()->Write("KorvalAsapServer/Properties/AsapFolder", text);
    EXPECT_EQ(Open()->Read("KorvalAsapServer/Properties/AsapFolder"), text);
  }
}

TEST_F(QSettingsStoreTest, KeepsWhatElseStandsInTheFile) {
  folder_.Write("user.ini", "[Other]\nKey=value\n");
  Open()->Write("QOR/General/CommPort", "SIM");
  EXPECT_THAT(Content("user.ini"), HasSubstr("[Other]\nKey=value\n"));
}

TEST_F(QSettingsStoreTest, ReplacesTheFileAsAWhole) {
  folder_.Write("user.ini", "[QOR]\nGeneral\\CommPort=COM3\n");
  std::ifstream reader(folder_.Path("user.ini"), std::ios::binary);
  Open()->Write("QOR/General/CommPort", "COM4");
  EXPECT_EQ(Rest(reader), "[QOR]\nGeneral\\CommPort=COM3\n") << "whoever reads sees the old file to its end";
  EXPECT_EQ(Content("user.ini"), "[QOR]\nGeneral\\CommPort=COM4\n");
}

TEST_F(QSettingsStoreTest, RunsOnDefaultsWithADamagedFileAndLeavesItAlone) {
  const std::string damaged = "[QOR]\nGeneral\\CommPort=COM3\nno key and no value\n";
  folder_.Write("user.ini", damaged);
  const auto store = Open();
  EXPECT_EQ(store->Read("QOR/General/CommPort"), std::nullopt);
  EXPECT_THROW(store->Write("QOR/General/CommPort", "SIM"), base::Failure);
  EXPECT_EQ(Content("user.ini"), damaged);
  ASSERT_EQ(reports_.size(), 1U);
  EXPECT_THAT(reports_[0], HasSubstr(folder_.Path("user.ini") + " is damaged"));
}

TEST_F(QSettingsStoreTest, ReportsADamagedMachineWideRecord) {
  folder_.Write("machine.ini", "DoNotUseWeb\n");
  EXPECT_EQ(Open()->ReadMachineWide("QOR/DoNotUseWeb"), std::nullopt);
  ASSERT_EQ(reports_.size(), 1U);
  EXPECT_THAT(reports_[0], HasSubstr("Installation record " + folder_.Path("machine.ini") + " is damaged"));
  EXPECT_THAT(reports_[0], ::testing::Not(HasSubstr("saves nothing"))) << "the settings are saved";
}

TEST_F(QSettingsStoreTest, SaysWhetherWhatWasStoredCanBeRead) {
  EXPECT_TRUE(Open()->IsReadable()) << "there is no file";
  folder_.Write("user.ini", "[QOR]\nGeneral\\CommPort=COM3\n");
  EXPECT_TRUE(Open()->IsReadable());
  folder_.Write("user.ini", "[KorvalAsapServer]\nProperties\\Allow 192.168.4.0/24\n");
  EXPECT_FALSE(Open()->IsReadable());
  std::filesystem::remove(folder_.Path("user.ini"));
  std::filesystem::create_directory(folder_.Path("user.ini"));
  EXPECT_FALSE(Open()->IsReadable());
}

TEST_F(QSettingsStoreTest, TakesAnyBytesForASettingsFile) {
  std::string bytes;
  for (int i = 0; i < 4096; ++i) bytes.push_back(static_cast<char>(i * 7919 >> 3));
  folder_.Write("user.ini", bytes);
  folder_.Write("machine.ini", "[" + bytes);
  const auto store = Open();
  EXPECT_EQ(store->Read("QOR/General/CommPort"), std::nullopt);
  EXPECT_EQ(store->ReadMachineWide("QOR/DoNotUseWeb"), std::nullopt);
}

TEST_F(QSettingsStoreTest, ReportsAFileThatCannotBeWrittenOnce) {
  folder_.Write("file", "");
  const auto store = Open("file/user.ini");
  EXPECT_THROW(store->Write("QOR/General/CommPort", "SIM"), base::Failure);
  EXPECT_THROW(store->Write("QOR/General/CommPort", "SIM"), base::Failure);
  EXPECT_EQ(store->Read("QOR/General/CommPort"), "SIM") << "holds for this run";
  ASSERT_EQ(reports_.size(), 1U);
  EXPECT_THAT(reports_[0], HasSubstr(folder_.Path("file/user.ini") + " cannot be read or written"));
}

TEST_F(QSettingsStoreTest, WritesAgainOnceTheFileCanBeWritten) {
  folder_.Write("file", "");
  const auto store = Open("file/user.ini");
  EXPECT_THROW(store->Write("QOR/General/CommPort", "COM3"), base::Failure);
  std::filesystem::remove(folder_.Path("file"));
  EXPECT_NO_THROW(store->Write("QOR/General/CommPort", "COM4"));
  EXPECT_EQ(Content("file/user.ini"), "[QOR]\nGeneral\\CommPort=COM4\n");
}

TEST_F(QSettingsStoreTest, SavesOnceADamagedFileIsMended) {
  folder_.Write("user.ini", "no key and no value\n");
  const auto store = Open();
  EXPECT_THROW(store->Write("QOR/General/CommPort", "SIM"), base::Failure);
  EXPECT_EQ(store->Read("QOR/General/CommPort"), "SIM") << "holds for this run";
  folder_.Write("user.ini", "[KorvalAsapServer]\nProperties\\tcpipPort=1002\n");
  store->Write("QOR/Hardware/InstanceName", "A1");
  EXPECT_EQ(Content("user.ini"),
            "[KorvalAsapServer]\nProperties\\tcpipPort=1002\n\n"
            "[QOR]\nGeneral\\CommPort=SIM\nHardware\\InstanceName=A1\n");
  EXPECT_EQ(store->Read("KorvalAsapServer/Properties/tcpipPort"), "1002");
}

// What a killed program leaves behind: nothing in the lock yet, or a computer that cannot be asked.
TEST_F(QSettingsStoreTest, RunsWithALockThatWasLeftOverAndSavesWhenItHasGone) {
  for (const char* const lock : {"", "4711\nkorval-asap-server\nanother-computer\n\n\n"}) {
    reports_.clear();
    folder_.Write("user.ini", "[QOR]\nHardware\\InstanceName=A1\n");
    folder_.Write("user.ini.lock", lock);
    folder_.Write("machine.ini", "[QOR]\nVersion=7.1\n");
    folder_.Write("machine.ini.lock", lock);
    const auto store = Open();
    EXPECT_EQ(store->Read("QOR/Hardware/InstanceName"), "A1");
    EXPECT_EQ(store->ReadMachineWide("QOR/Version"), "7.1");
    EXPECT_THAT(reports_, IsEmpty()) << "reading takes no lock";
    EXPECT_THROW(store->Write("QOR/General/CommPort", "SIM"), base::Failure);
    EXPECT_THROW(store->Write("QOR/General/CommPort", "COM3"), base::Failure);
    EXPECT_EQ(store->Read("QOR/General/CommPort"), "COM3") << "holds for this run";
    ASSERT_EQ(reports_.size(), 1U);
    EXPECT_THAT(reports_[0], HasSubstr(folder_.Path("user.ini") + " is locked"));
    std::filesystem::remove(folder_.Path("user.ini.lock"));
    store->Write("KorvalAsapServer/Properties/tcpipPort", "1002");
    EXPECT_EQ(Content("user.ini"),
              "[KorvalAsapServer]\nProperties\\tcpipPort=1002\n\n"
              "[QOR]\nGeneral\\CommPort=COM3\nHardware\\InstanceName=A1\n");
  }
}

TEST_F(QSettingsStoreTest, TakesAnOldLockOver) {
  folder_.Write("user.ini.lock", "");
  std::filesystem::last_write_time(folder_.Path("user.ini.lock"),
                                   std::filesystem::file_time_type::clock::now() - std::chrono::minutes(1));
  Open()->Write("QOR/General/CommPort", "SIM");
  EXPECT_EQ(Content("user.ini"), "[QOR]\nGeneral\\CommPort=SIM\n");
  EXPECT_FALSE(std::filesystem::exists(folder_.Path("user.ini.lock")));
}

TEST_F(QSettingsStoreTest, WritesThroughALinkIntoTheFileBehindIt) {
  folder_.Write("real.ini", "[QOR]\nHardware\\InstanceName=A1\n");
  std::filesystem::create_symlink(folder_.Path("real.ini"), folder_.Path("user.ini"));
  Open()->Write("QOR/General/CommPort", "SIM");
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.Path("user.ini")));
  EXPECT_EQ(Content("real.ini"), "[QOR]\nGeneral\\CommPort=SIM\nHardware\\InstanceName=A1\n");
}

TEST_F(QSettingsStoreTest, KeepsTheSettingsOfAPersonBelowTheConfigurationFolder) {
  qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(folder_.Path("config")));
  const std::string machine = folder_.Path("machine.ini");
  QSettingsStore store({}, QString::fromStdString(machine), [](const std::string&) {});
  store.Write("QOR/General/CommPort", "SIM");
  qunsetenv("XDG_CONFIG_HOME");
  EXPECT_EQ(Content("config/Korval/Korval.ini"), "[QOR]\nGeneral\\CommPort=SIM\n");
}

}  // namespace
}  // namespace korval::platform
