// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "host/control/ConfigPanelLogic.h"
#include "tests/host/control/FakePanelFields.h"
#include "tests/support/FakePower.h"
#include "tests/support/MemorySettings.h"

namespace korval::host {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

const PanelValues kLoaded{"9600,n,8,1", 2, 0, false, 1001, "/srv/asap", "/srv/ecu", "", ""};

class ConfigPanelLogicTest : public testing::Test {
 protected:
  void Load(const std::string& setting) {
    PanelValues values = kLoaded;
    values.setting = setting;
    logic_.SetValue(values);
  }
  std::string Saved(const std::string& key) { return store_.user["KorvalAsapServer/Properties/" + key]; }

  tests::FakePanelFields fields_;
  tests::MemorySettings store_;
  tests::CallLog log_;
  tests::FakeMessageBox box_{log_};
  std::string refused_access_;
  ConfigPanelLogic logic_{
      fields_, store_, box_,
      [this](const std::string&, const std::string& allow) {
        if (!allow.empty() && allow == refused_access_) throw base::Failure("bad " + allow);
      },
      [this](bool cancelled) { log_.emplace_back(cancelled ? "cancelled" : "accepted"); }};
};

TEST_F(ConfigPanelLogicTest, SetValueShowsEveryField) {
  logic_.SetValue({"9600,e,7,2", 4, 3, true, 2345, "/srv/asap", "/srv/ecu", "", ""});
  EXPECT_EQ(fields_.asap_folder, "/srv/asap");
  EXPECT_EQ(fields_.korv_folder, "/srv/ecu");
  EXPECT_EQ(fields_.tcp_port, "2345");
  EXPECT_EQ(fields_.speed, "9600");
  EXPECT_EQ(fields_.parity, "Even");
  EXPECT_EQ(fields_.data_bits, "7");
  EXPECT_EQ(fields_.stop_bits, "2");
  EXPECT_EQ(fields_.port, 3);
  EXPECT_EQ(fields_.flow, 3);
  EXPECT_TRUE(fields_.open_at_start);
}

TEST_F(ConfigPanelLogicTest, OkTakesWhereToListenAndWhomToLetIn) {
  PanelValues values = kLoaded;
  values.listen = "192.168.4.10";
  values.allow = "192.168.4.0/24";
  logic_.SetValue(values);
  EXPECT_EQ(fields_.listen, "192.168.4.10");
  EXPECT_EQ(fields_.allow, "192.168.4.0/24");
  fields_.listen = " 127.0.0.1 ";
  fields_.allow = "127.0.0.1, 192.168.4.0/24 ";
  logic_.Ok();
  EXPECT_EQ(logic_.Values().listen, "127.0.0.1");
  EXPECT_EQ(logic_.Values().allow, "127.0.0.1, 192.168.4.0/24");
  EXPECT_EQ(Saved("Listen"), "127.0.0.1");
  EXPECT_EQ(Saved("Allow"), "127.0.0.1, 192.168.4.0/24");
}

TEST_F(ConfigPanelLogicTest, OkRefusesClientsThatNobodyUnderstandsAndKeepsEverything) {
  logic_.SetValue(kLoaded);
  refused_access_ = "192.168.4";
  fields_.allow = refused_access_;
  logic_.Ok();
  EXPECT_THAT(log_, ElementsAre("box bad 192.168.4"));
  EXPECT_EQ(logic_.Values(), kLoaded);
  EXPECT_THAT(store_.written, IsEmpty());
}

TEST_F(ConfigPanelLogicTest, AnOkWithoutSetValueLeavesTheStoredClientsAsTheyAre) {
  store_.user = {{"KorvalAsapServer/Properties/Listen", "127.0.0.1"},
                 {"KorvalAsapServer/Properties/Allow", "192.168.4.0/24"}};
  tests::FakePanelFields fields;
  ConfigPanelLogic logic(
      fields, store_, box_, [](const std::string&, const std::string&) {}, [](bool) {});
  EXPECT_EQ(fields.allow, "192.168.4.0/24");
  fields.speed = "9600";
  fields.parity = "None";
  fields.data_bits = "8";
  fields.stop_bits = "1";
  logic.Ok();
  EXPECT_EQ(Saved("Listen"), "127.0.0.1");
  EXPECT_EQ(Saved("Allow"), "192.168.4.0/24");
}

TEST_F(ConfigPanelLogicTest, SetValueTakesOneAndAHalfStopBitsApart) {
  Load("19200,n,8,1.5");
  EXPECT_EQ(fields_.speed, "19200");
  EXPECT_EQ(fields_.parity, "None");
  EXPECT_EQ(fields_.data_bits, "8");
  EXPECT_EQ(fields_.stop_bits, "1.5");
}

TEST_F(ConfigPanelLogicTest, SetValueCountsPositionsFromTheEndSoThatTheSpeedMayHaveAnyNumberOfDigits) {
  for (const std::string speed : {"110", "9600", "256000"}) {
    Load(speed + ",o,5,1");
    EXPECT_EQ(fields_.speed, speed);
    EXPECT_EQ(fields_.parity, "Odd");
    EXPECT_EQ(fields_.data_bits, "5");
    EXPECT_EQ(fields_.stop_bits, "1");
  }
}

TEST_F(ConfigPanelLogicTest, SetValueDoesNotSearchForCommas) {
  Load("9600;m;8;2");
  EXPECT_EQ(fields_.speed, "9600");
  EXPECT_EQ(fields_.parity, "Mark");
  EXPECT_EQ(fields_.data_bits, "8");
  EXPECT_EQ(fields_.stop_bits, "2");
}

TEST_F(ConfigPanelLogicTest, SetValueKnowsTheFiveLowerCaseParityLetters) {
  const std::map<char, std::string> parities{
      {'e', "Even"}, {'o', "Odd"}, {'n', "None"}, {'m', "Mark"}, {'s', "Space"}};
  for (const auto& [letter, parity] : parities) {
    fields_.parity.clear();
    Load(std::string("9600,") + letter + ",8,1");
    EXPECT_EQ(fields_.parity, parity);
  }
}

TEST_F(ConfigPanelLogicTest, SetValueLeavesTheParityListAsItIsForEveryOtherLetter) {
  for (const char letter : {'E', 'O', 'N', 'M', 'S', 'x', ' '}) {
    fields_.parity = "Odd";
    Load(std::string("9600,") + letter + ",8,1");
    EXPECT_EQ(fields_.parity, "Odd") << letter;
  }
}

TEST_F(ConfigPanelLogicTest, SetValueShowsNothingOfASettingThatIsTooShort) {
  fields_.speed = "300";
  for (const std::string setting : {"", "n,8,1", ",8,1.5", "."}) {
    Load(setting);
    EXPECT_EQ(fields_.speed, "300") << setting;
    EXPECT_EQ(fields_.stop_bits, "") << setting;
  }
  EXPECT_EQ(fields_.tcp_port, "1001");
}

TEST_F(ConfigPanelLogicTest, SetValueShowsASettingWithoutASpeed) {
  fields_.speed = "300";
  Load(",s,6,2");
  EXPECT_EQ(fields_.speed, "");
  EXPECT_EQ(fields_.parity, "Space");
  EXPECT_EQ(fields_.data_bits, "6");
}

TEST_F(ConfigPanelLogicTest, OkComposesTheSettingWithTheUpperCaseFirstLetterOfTheParity) {
  Load("9600,e,8,1");
  logic_.Ok();
  EXPECT_EQ(logic_.Values().setting, "9600,E,8,1");
  EXPECT_EQ(Saved("Settings"), "9600,E,8,1");
}

TEST_F(ConfigPanelLogicTest, OkTrimsTheTextsOfTheLists) {
  Load("9600,n,8,1");
  fields_.speed = " 19200 ";
  fields_.data_bits = " 7";
  fields_.stop_bits = "1.5 ";
  logic_.Ok();
  EXPECT_EQ(logic_.Values().setting, "19200,N,7,1.5");
}

TEST_F(ConfigPanelLogicTest, OkSavesTheValuesInTheirOrderAndTextForms) {
  logic_.SetValue({"9600,n,8,1.5", 16, 2, true, 65535, "/srv/asap", "/srv/ecu", "", ""});
  logic_.Ok();
  EXPECT_THAT(store_.written, ElementsAre(Pair("KorvalAsapServer/Properties/Settings", "9600,N,8,1.5"),
                                          Pair("KorvalAsapServer/Properties/CommPort", "16"),
                                          Pair("KorvalAsapServer/Properties/Handshaking", "2"),
                                          Pair("KorvalAsapServer/Properties/AsapFolder", "/srv/asap"),
                                          Pair("KorvalAsapServer/Properties/KorvFolder", "/srv/ecu"),
                                          Pair("KorvalAsapServer/Properties/comAutoStart", "-1"),
                                          Pair("KorvalAsapServer/Properties/tcpipPort", "65535")));
  EXPECT_THAT(log_, ElementsAre("accepted"));
}

TEST_F(ConfigPanelLogicTest, OkSavesAnUncheckedBoxAsZero) {
  logic_.SetValue(kLoaded);
  logic_.Ok();
  EXPECT_EQ(Saved("comAutoStart"), "0");
}

TEST_F(ConfigPanelLogicTest, OkTakesTheFieldsAsTheyWereEdited) {
  logic_.SetValue(kLoaded);
  fields_.port = 8;
  fields_.flow = 1;
  fields_.open_at_start = true;
  fields_.tcp_port = "4711";
  fields_.asap_folder = "/other/asap";
  fields_.korv_folder = "/other/ecu";
  logic_.Ok();
  EXPECT_EQ(logic_.Values(),
            (PanelValues{"9600,N,8,1", 9, 1, true, 4711, "/other/asap", "/other/ecu", "", ""}));
}

TEST_F(ConfigPanelLogicTest, ATcpPortTextThatIsNoPortKeepsThePreviousOneAndEverythingIsSaved) {
  for (const std::string text : {"abc", "", "12x", "0", "-1", "65536", "99999999999"}) {
    logic_.SetValue({"9600,n,8,1", 2, 0, false, 2345, "/srv/asap", "/srv/ecu", "", ""});
    store_.written.clear();
    log_.clear();
    fields_.tcp_port = text;
    logic_.Ok();
    EXPECT_EQ(logic_.Values().tcp_ip_port, 2345) << text;
    EXPECT_EQ(store_.written.size(), 7U) << text;
    EXPECT_EQ(Saved("tcpipPort"), "2345") << text;
    EXPECT_THAT(log_, ElementsAre("accepted")) << text;
  }
}

TEST_F(ConfigPanelLogicTest, SettingsThatNoLineCouldTakeAreRefusedWithAMessageBoxAndNothingElse) {
  logic_.SetValue(kLoaded);
  fields_.speed = "fast";
  fields_.tcp_port = "4711";
  logic_.Ok();
  EXPECT_THAT(log_, ElementsAre(HasSubstr("box Serial settings 'fast,N,8,1'")));
  EXPECT_THAT(store_.written, IsEmpty());
  EXPECT_EQ(logic_.Values(), kLoaded);
}

TEST_F(ConfigPanelLogicTest, AFailedSavingIsToldAfterTheEditWasAccepted) {
  logic_.SetValue(kLoaded);
  store_.read_only = true;
  logic_.Ok();
  EXPECT_THAT(log_, ElementsAre("accepted", "box the settings cannot be written"));
  EXPECT_EQ(logic_.Values().setting, "9600,N,8,1");
}

TEST_F(ConfigPanelLogicTest, CancelSavesAndChangesNothing) {
  logic_.SetValue(kLoaded);
  fields_.tcp_port = "4711";
  fields_.speed = "300";
  fields_.port = 9;
  logic_.Cancel();
  EXPECT_THAT(log_, ElementsAre("cancelled"));
  EXPECT_THAT(store_.written, IsEmpty());
  EXPECT_EQ(logic_.Values(), kLoaded);
}

TEST_F(ConfigPanelLogicTest, TheFoldersAreThoseOfTheListsAtAnyTime) {
  logic_.SetValue(kLoaded);
  fields_.asap_folder = "/gone/elsewhere";
  EXPECT_EQ(logic_.Values().asap_folder, "/gone/elsewhere");
}

TEST_F(ConfigPanelLogicTest, SettingTheFoldersPointsTheListsAtThem) {
  PanelValues values = kLoaded;
  values.asap_folder = "/new/asap";
  values.korv_folder = "/new/ecu";
  logic_.SetValues(values);
  EXPECT_EQ(fields_.asap_folder, "/new/asap");
  EXPECT_EQ(fields_.korv_folder, "/new/ecu");
}

}  // namespace
}  // namespace korval::host
