// SPDX-License-Identifier: MIT
#include <filesystem>

#include <gtest/gtest.h>

#include "base/Failure.h"
#include "ecu/ecufile/XmlEcuFileCache.h"
#include "model/KorvAsapFile.h"
#include "tests/support/TempFolder.h"

namespace korval::model {
namespace {

constexpr char kEcuFile[] =
    "<xml xmlns:qor='urn:korval:ecu'><qor:Target><Function Name='MOTOR'/><Requests>"
    "<Request Name='A'><Received><DataItem Name='Speed' Ref='1'/><DataItem Name='Hidden' Ref='0'/>"
    "<DataItem Name='Unmarked'/><DataItem Name='Speed' Ref='1'/></Received></Request>"
    "<Request Name='B'><Sent><DataItem Name='SentOnly' Ref='1'/></Sent>"
    "<Received><DataItem Name='Temp' Ref='1'/><DataItem Ref='1'/></Received></Request>"
    "</Requests></qor:Target></xml>";

class KorvAsapFileTest : public testing::Test {
 protected:
  KorvAsapFileTest() { folder_.Write("ecu.xml", kEcuFile); }

  KorvAsapFile File(const std::string& section = "ENGINE", const std::string& name = "description.xml") {
    return {Folders{folder_.Path(), folder_.Path()}, name, section, 16, 1};
  }

  // Loads a description with this content; the failure's description, "" when there was none.
  std::string Load(const std::string& description, const std::string& section = "ENGINE") {
    folder_.Write("description.xml", description);
    KorvAsapFile file = File(section);
    try {
      file.ReadDescriptionFile(read_);
    } catch (const base::Failure& failure) {
      EXPECT_FALSE(file.IsDataExist("N"));
      return failure.Description();
    }
    return {};
  }

  KorvAsapFile Loaded(const std::string& description) {
    folder_.Write("description.xml", description);
    KorvAsapFile file = File();
    file.ReadDescriptionFile(read_);
    return file;
  }

  // Loads a description whose section points to an ECU file with this content.
  std::string LoadEcuFile(const std::string& content) {
    folder_.Write("other.xml", content);
    return Load("<xml><ecu name='ENGINE' url='other.xml'/></xml>");
  }

  tests::TempFolder folder_;
  ecu::XmlEcuFileCache ecu_files_;
  const FileContents::ReadEcuFile read_ = [this](const std::string& path) { return ecu_files_.Read(path); };
};

TEST_F(KorvAsapFileTest, LoadsFunctionAndShortNames) {
  const KorvAsapFile file = Loaded(
      "<xml><ecu name='OTHER'/><ecu name='ENGINE' url='ecu.xml'>"
      "<data name='Speed' shortname='N'/><data name='Temp' shortname='T'/></ecu></xml>");
  EXPECT_EQ(file.KorvFunction(), "MOTOR");
  EXPECT_EQ(file.KorvFileName(), folder_.Path("ecu.xml"));
  EXPECT_TRUE(file.IsDataExist("N"));
  EXPECT_EQ(file.KorvDataName("N"), "Speed");
  EXPECT_EQ(file.KorvDataName("T"), "Temp");
  EXPECT_FALSE(file.IsDataExist("Speed"));
  EXPECT_EQ(file.KorvDataName("n"), "");
  EXPECT_EQ(file.KorvDataName(""), "");
}

TEST_F(KorvAsapFileTest, OnlyReferencedAnswerItemsAreUsable) {
  const KorvAsapFile file = Loaded(
      "<xml><ecu name='ENGINE' url='ecu.xml'><data name='Hidden' shortname='H'/>"
      "<data name='Unmarked' shortname='U'/><data name='SentOnly' shortname='S'/>"
      "<data name='Nowhere' shortname='W'/><data name='' shortname='E'/><data shortname='M'/></ecu></xml>");
  for (const char* name : {"H", "U", "S", "W", "E", "M"}) EXPECT_FALSE(file.IsDataExist(name)) << name;
}

TEST_F(KorvAsapFileTest, FirstOfTwoEqualShortNamesWins) {
  const KorvAsapFile file = Loaded(
      "<xml><ecu name='ENGINE' url='ecu.xml'><data name='Temp' shortname='X'/>"
      "<data name='Speed' shortname='X'/></ecu></xml>");
  EXPECT_EQ(file.KorvDataName("X"), "Temp");
}

TEST_F(KorvAsapFileTest, ElementWithoutShortNameIsSkipped) {
  const KorvAsapFile file = Loaded(
      "<xml><ecu name='ENGINE' url='ecu.xml'><data name='Speed'/><data name='Temp' "
      "shortname='T'/></ecu></xml>");
  EXPECT_FALSE(file.IsDataExist(""));
  EXPECT_TRUE(file.IsDataExist("T"));
}

TEST_F(KorvAsapFileTest, SectionNotThereIsNamed) {
  EXPECT_EQ(Load("<xml><ecu name='A'/></xml>"), "Binary file 'ENGINE' not found");
  EXPECT_EQ(Load("<other><ecu name='ENGINE'/></other>"), "Binary file 'ENGINE' not found");
  EXPECT_EQ(Load("<xml><ecu/></xml>", ""), "Binary file '' not found");
}

TEST_F(KorvAsapFileTest, NameWithQuotesChangesNoSelection) {
  const std::string trick = "x' or '1'='1";
  EXPECT_EQ(Load("<xml><ecu name='ENGINE' url='ecu.xml'/></xml>", trick),
            "Binary file '" + trick + "' not found");
  const KorvAsapFile file =
      Loaded("<xml><ecu name='ENGINE' url='ecu.xml'><data name='Speed' shortname=\"N'\"/></ecu></xml>");
  EXPECT_TRUE(file.IsDataExist("N'"));
  EXPECT_FALSE(file.IsDataExist("N' or '1'='1"));
}

TEST_F(KorvAsapFileTest, SectionWithoutUrlIsNamed) {
  EXPECT_EQ(Load("<xml><ecu name='ENGINE'/></xml>"),
            "Korval file URL not found in the binary file 'ENGINE' section");
}

TEST_F(KorvAsapFileTest, EcuFileWithoutFunctionIsRefusedWithTheLiteralText) {
  const std::string text = "Bad Ecu XML file 'ecuFileName', unable to load Ecu description";
  EXPECT_EQ(LoadEcuFile("<xml/>"), text);
  EXPECT_EQ(LoadEcuFile("<xml><qor:Target><Function/></qor:Target></xml>"), text);
  EXPECT_EQ(LoadEcuFile("<xml><Target><Function Name='M'/></Target></xml>"), text);
}

TEST_F(KorvAsapFileTest, FunctionIsTheFirstThatHasAName) {
  EXPECT_EQ(LoadEcuFile("<xml><qor:Target><Function/></qor:Target>"
                        "<qor:Target><Function Name='SECOND'/></qor:Target></xml>"),
            "");
}

TEST_F(KorvAsapFileTest, NamesThatLeadOutOfTheFolderAreRefused) {
  for (const char* url : {"../ecu.xml", "..\\ecu.xml", "/etc/passwd", "C:\\ecu.xml", "a/../../ecu.xml", ""}) {
    EXPECT_NE(Load(std::string("<xml><ecu name='ENGINE' url='") + url + "'/></xml>"), "") << url;
  }
  KorvAsapFile file = File("ENGINE", "../description.xml");
  EXPECT_THROW(file.ReadDescriptionFile(read_), base::Failure);
}

TEST_F(KorvAsapFileTest, BackslashSeparatesFoldersInUrls) {
  std::filesystem::create_directory(folder_.Path("sub"));
  folder_.Write("sub/ecu.xml", kEcuFile);
  const KorvAsapFile file = Loaded("<xml><ecu name='ENGINE' url='sub\\ecu.xml'/></xml>");
  EXPECT_EQ(file.KorvFileName(), (std::filesystem::path(folder_.Path("sub")) / "ecu.xml").string());
}

TEST_F(KorvAsapFileTest, MissingAndEmptyFilesAreFailures) {
  KorvAsapFile file = File("ENGINE", "missing.xml");
  EXPECT_THROW(file.ReadDescriptionFile(read_), base::Failure);
  EXPECT_NE(Load(""), "");
  EXPECT_NE(LoadEcuFile(""), "");
  EXPECT_NE(Load("<xml><ecu name='ENGINE' url='nowhere.xml'/></xml>"), "");
}

TEST_F(KorvAsapFileTest, ParserErrorCarriesItsCodeAndReason) {
  folder_.Write("description.xml", "<xml><ecu name='ENGINE' url='ecu.xml'></xml>");
  KorvAsapFile file = File();
  try {
    file.ReadDescriptionFile(read_);
    FAIL() << "no failure";
  } catch (const base::Failure& failure) {
    EXPECT_EQ(failure.Number(), pugi::status_end_element_mismatch);
    EXPECT_NE(failure.Description().find("mismatch"), std::string::npos);
  }
}

TEST_F(KorvAsapFileTest, HostileDocumentsAreRefusedOrReadHarmlessly) {
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += "<xml>";
  EXPECT_NE(Load(deep), "");
  std::string closed = deep;
  for (int i = 0; i < 100000; ++i) closed += "</xml>";
  EXPECT_EQ(Load(closed), "Binary file 'ENGINE' not found");
  EXPECT_EQ(LoadEcuFile(closed), "Bad Ecu XML file 'ecuFileName', unable to load Ecu description");
  const std::string huge(4U << 20U, 'x');
  EXPECT_EQ(Load("<xml><ecu name='" + huge + "'/></xml>"), "Binary file 'ENGINE' not found");
  EXPECT_EQ(LoadEcuFile("<xml><qor:Target><Function Name='" + huge + "'/></qor:Target></xml>"), "");
  EXPECT_NE(Load(std::string("\xFF\xFE<\0x\0", 6)), "");
  EXPECT_NE(Load(std::string(1000, '\0')), "");
}

TEST_F(KorvAsapFileTest, EntitiesOfADocumentTypeStayUnexpanded) {
  const KorvAsapFile file = Loaded(
      "<!DOCTYPE xml [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;'>"
      "<!ENTITY f SYSTEM 'file:///etc/passwd'>]>"
      "<xml><ecu name='ENGINE' url='ecu.xml'><data name='Speed' shortname='&b;&f;'/></ecu></xml>");
  EXPECT_TRUE(file.IsDataExist("&b;&f;"));
}

TEST_F(KorvAsapFileTest, NamesAreReadInTheDeclaredEncoding) {
  const KorvAsapFile file = Loaded(
      "<?xml version='1.0' encoding='windows-1252'?><xml><ecu name='ENGINE' url='ecu.xml'>"
      "<data name='Temp' shortname='T\xB0\x80'/></ecu></xml>");
  EXPECT_EQ(file.KorvDataName("T\u00B0\u20AC"), "Temp");
}

TEST_F(KorvAsapFileTest, AutoCanFileIsThatOfTheSectionAutocan) {
  const KorvAsapFile with =
      Loaded("<xml><ecu name='ENGINE' url='ecu.xml'/><ecu name='AUTOCAN' url='can.dbc'/></xml>");
  EXPECT_EQ(with.GetAutoCanFile(), folder_.Path("can.dbc"));
  EXPECT_EQ(Loaded("<xml><ecu name='ENGINE' url='ecu.xml'/></xml>").GetAutoCanFile(), "");
  EXPECT_EQ(Loaded("<xml><ecu name='ENGINE' url='ecu.xml'/><ecu name='AUTOCAN'/></xml>").GetAutoCanFile(),
            "");
  EXPECT_EQ(File().GetAutoCanFile(), "");
}

TEST_F(KorvAsapFileTest, AutoCanFileOutsideTheFolderIsRefused) {
  const KorvAsapFile file =
      Loaded("<xml><ecu name='ENGINE' url='ecu.xml'/><ecu name='AUTOCAN' url='../can.dbc'/></xml>");
  EXPECT_THROW(file.GetAutoCanFile(), base::Failure);
}

TEST_F(KorvAsapFileTest, ParsedEcuFileIsGivenAwayOnce) {
  KorvAsapFile file = Loaded("<xml><ecu name='ENGINE' url='ecu.xml'/></xml>");
  EXPECT_NE(file.TakeEcuFile(), nullptr);
  EXPECT_EQ(file.TakeEcuFile(), nullptr);
}

}  // namespace
}  // namespace korval::model
