// SPDX-License-Identifier: MIT
// Selection of description files: what it finds, what it refuses, and what it traces.
#include <filesystem>

#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr std::string_view kSelectError = "select file error : ";

class SelectFileTest : public ServerBench {
 protected:
  static void ExpectRefused(const RawClient& client, const std::string& file, const std::string& section,
                            const std::string& description) {
    EXPECT_EQ(Hex(client.Ask(SelectRequest(file, section))),
              Hex(ErrorReply(kSelectFile, 1, std::string(kSelectError) + description)));
  }
};

TEST_F(SelectFileTest, AMissingSectionIsNamed) {
  Start();
  const RawClient client = Connect();
  Identify(client);
  ExpectRefused(client, "engine.xml", "NOWHERE", "Binary file 'NOWHERE' not found");
  ExpectRefused(client, "engine.xml", "engine_map", "Binary file 'engine_map' not found");
  ExpectRefused(client, "engine.xml", "", "Binary file '' not found");
}

TEST_F(SelectFileTest, AQuoteInASectionNameIsText) {
  Start();
  const RawClient client = Connect();
  Identify(client);
  for (const std::string name :
       {"x' or '1'='1", "'", "ENGINE_MAP' or 'a'='a", "\"", "']|/xml/ecu['", "x\" or \"1\"=\"1"})
    ExpectRefused(client, "engine.xml", name, "Binary file '" + name + "' not found");
}

TEST_F(SelectFileTest, ASectionWithoutUrlIsNamed) {
  Start();
  const RawClient client = Connect();
  Identify(client);
  ExpectRefused(client, "engine.xml", "NO_URL",
                "Korval file URL not found in the binary file 'NO_URL' section");
}

TEST_F(SelectFileTest, AnEcuFileWithoutAFunctionIsRefusedWithTheFixedText) {
  WritePair("nameless", R"(<xml xmlns:qor="urn:korval:ecu"><qor:Target><Function/></qor:Target></xml>)", {});
  WritePair("bare", "<xml/>", {});
  Start();
  const RawClient client = Connect();
  Identify(client);
  for (const char* const file : {"nameless.xml", "bare.xml"})
    ExpectRefused(client, file, "MAP", "Bad Ecu XML file 'ecuFileName', unable to load Ecu description");
}

TEST_F(SelectFileTest, AFailureTracesTheFileAndTheDescription) {
  Start();
  const RawClient client = Connect();
  Identify(client);
  server_->WaitFor("identify(");
  const std::string reply = client.Ask(SelectRequest("no such file.xml", "MAP", 3));
  EXPECT_EQ(ErrorNumberOf(reply), 1U);
  const std::string text = ErrorTextOf(reply);
  ASSERT_THAT(text, StartsWith(std::string(kSelectError)));
  const std::string description = text.substr(kSelectError.size());
  EXPECT_THAT(description, Not(IsEmpty()));
  EXPECT_THAT(
      server_->TraceUntil("   error : "),
      ElementsAre("select file(no such file.xml,MAP,3)",
                  "   error when loading korval file : no such file.xml", "   error : " + description));
}

TEST_F(SelectFileTest, AFailureLeavesTheStateAndUsesUpANumber) {
  Start();
  const RawClient client = Connect();
  Identify(client);
  EXPECT_EQ(StatusOf(client.Ask(SelectRequest("engine.xml", "NOWHERE"))), kError);
  EXPECT_EQ(StatusOf(client.Ask(GetRequest(1, "N"))), kNotProcessed);
  EXPECT_EQ(Select(client, "engine.xml", "ENGINE_MAP"), 2U);
  EXPECT_EQ(StatusOf(client.Ask(SelectRequest("engine.xml", "NOWHERE"))), kError);
  EXPECT_EQ(StatusOf(client.Ask(GetRequest(2, "N"))), kSuccess);
  EXPECT_EQ(StatusOf(client.Ask(GetRequest(1, "N"))), kError);
  EXPECT_EQ(StatusOf(client.Ask(GetRequest(3, "N"))), kError);
}

TEST_F(SelectFileTest, ATruncatedSelectionIsASelectFileError) {
  Start();
  const RawClient client = Connect();
  Identify(client);
  for (const std::string& fields :
       {std::string(), FromHex("0004 4142"), Text("engine.xml"), Text("engine.xml") + FromHex("0100"),
        Text("engine.xml") + Text("ENGINE_MAP")}) {
    const std::string reply = client.Ask(Request(kSelectFile, fields));
    EXPECT_EQ(StatusOf(reply), kError) << Hex(fields);
    EXPECT_EQ(ErrorNumberOf(reply), 1U);
    EXPECT_THAT(ErrorTextOf(reply), StartsWith(std::string(kSelectError)));
  }
  EXPECT_EQ(StatusOf(client.Ask(SelectRequest("engine.xml", "ENGINE_MAP"))), kSuccess);
}

TEST_F(SelectFileTest, BackslashesSeparateFolders) {
  std::filesystem::create_directory(folder_.Path("asap/cars"));
  std::filesystem::create_directory(folder_.Path("korv/ecus"));
  WriteDescription("cars/one.xml", DescriptionFile(Section("MAP", "ecus\\one.xml", {{"EngineSpeed", "N"}})));
  WriteEcu("ecus/one.xml", EcuFile("Name=\"ONE\"", kEngineRequests, kEngineAnswers));
  Start();
  const RawClient client = Connect();
  Identify(client);
  EXPECT_EQ(Select(client, "cars\\one.xml", "MAP"), 1U);
  EXPECT_THAT(server_->TraceUntil(folder_.Path("korv/ecus/one.xml") + " load in Korval session"),
              ::testing::Contains("select file(cars\\one.xml,MAP,0)"));
}

TEST_F(SelectFileTest, TheFirstOfTwoEqualShortNamesWins) {
  WritePair("twins", EcuFile("Name=\"TWINS\"", kEngineRequests, kEngineAnswers),
            {{"CoolantTemp", "X"}, {"EngineSpeed", "X"}});
  Start();
  const RawClient client = Connect();
  OpenPair(client, "twins");
  Succeed(client, AcquisitionRequest(1, {"X"}));
  EXPECT_EQ(Hex(client.Ask(Request(kGetOnlineValue))),
            Hex(Reply(kGetOnlineValue, kSuccess, Word(1) + Real(90))));
}

TEST_F(SelectFileTest, OnlyAnswerItemsMarkedAsReferencesCanBeChosen) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  for (const std::string name : {"HIDDEN", "MISSING", "EngineSpeed", "n"})
    EXPECT_EQ(Hex(client.Ask(AcquisitionRequest(1, {name}))),
              Hex(ErrorReply(kSetAcquisition, 12003, "set acq para : Error unknown data (" + name)));
}

TEST_F(SelectFileTest, TheMessagingFileIsLoadedAndTraced) {
  WriteDescription("can.xml", DescriptionFile(Section("MAP", "engine_ecu.xml", kEngineData) +
                                              Section("AUTOCAN", "messaging.xml", {})));
  WriteEcu("messaging.xml", R"(<xml><messaging Bitrate="500000"><Frame Id="1A0" Name="Wheel" CycleMs="10">
    <DataItem Name="WheelSpeed" FirstByte="1" BitsCount="16" Step="0.01"/></Frame></messaging></xml>)");
  Start();
  const RawClient client = Connect();
  Identify(client);
  server_->WaitFor("identify(");
  EXPECT_EQ(Select(client, "can.xml", "MAP"), 1U);
  client.Ask(HarmlessRequest());
  EXPECT_THAT(server_->TraceUntil("switching"),
              ElementsAre("select file(can.xml,MAP,0)",
                          folder_.Path("korv/engine_ecu.xml") + " load in Korval session",
                          "   messaging automatic loading : " + folder_.Path("korv/messaging.xml"),
                          "switching offline/online(7)"));
}

TEST_F(SelectFileTest, AMessagingFileThatFailsIsTracedAndTheSelectionHolds) {
  WriteDescription("can.xml", DescriptionFile(Section("MAP", "engine_ecu.xml", kEngineData) +
                                              Section("AUTOCAN", "absent.xml", {})));
  Start();
  const RawClient client = Connect();
  Identify(client);
  EXPECT_EQ(Select(client, "can.xml", "MAP"), 1U);
  EXPECT_THAT(server_->WaitFor("   Error messaging automatic loading : "),
              StartsWith("   Error messaging automatic loading : " + folder_.Path("korv/absent.xml")));
  EXPECT_EQ(StatusOf(client.Ask(GetRequest(1, "N"))), kSuccess);
}

TEST_F(SelectFileTest, AnEcuThatIsSwitchedOffCanBeSelected) {
  WritePair("off",
            EcuFile("Name=\"OFF\"", kEngineRequests,
                    R"(<Fault Init="1" Number="2000" Times="1"/>)" + kEngineAnswers),
            kEngineData);
  Start();
  const RawClient client = Connect();
  OpenPair(client, "off");
  EXPECT_EQ(Hex(client.Ask(GetRequest(1, "N"))), Hex(Reply(kGetParameter, kSuccess, FourReals(800))));
}

}  // namespace
}  // namespace korval::tests
