// SPDX-License-Identifier: MIT
// What a client is answered is what the files and the ECU say, or it is refused with a sentence.
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::HasSubstr;

class TrueAnswersTest : public ServerBench {
 protected:
  static std::string Request(const std::string& bytes, const std::string& item) {
    return "<Request Name=\"R" + bytes + "\"><Sent Bytes=\"" + bytes + "\"/><Received MinBytes=\"3\">" +
           item + "</Received></Request>";
  }
  static std::string Answer(const std::string& request, const std::string& response) {
    return "<Answer Request=\"" + request + "\" Response=\"" + response + "\"/>";
  }
};

TEST_F(TrueAnswersTest, WholeNumberThatASingleHasNotArrivesUnchanged) {
  const std::string date =
      "<DataItem Name=\"Date\" Ref=\"1\" FirstByte=\"3\" BitsCount=\"32\" Coding=\"bcd\"/>";
  WritePair("dates", EcuFile("Name=\"DATES\"", Request("2101", date), Answer("2101", "610120260315")),
            {{"Date", "D"}});
  Start();
  const RawClient client = Connect();
  OpenPair(client, "dates");
  EXPECT_EQ(Hex(client.Ask(ExtendedGetRequest(1, "D"))),
            Hex(Reply(kExtendedGet, kSuccess, Word(1) + FourReals8(20260315))));
}

TEST_F(TrueAnswersTest, CrossingShortNamesAreReadAlikeByEveryCommand) {
  const std::string items =
      "<DataItem Name=\"Alpha\" Ref=\"1\" FirstByte=\"3\"/><DataItem Name=\"Temp\" Ref=\"1\" "
      "FirstByte=\"4\"/>";
  WritePair("crossing", EcuFile("Name=\"CROSSING\"", Request("2101", items), Answer("2101", "61010A14")),
            {{"Alpha", "Temp"}, {"Temp", "Alpha"}});
  Start();
  const RawClient client = Connect();
  OpenPair(client, "crossing");
  EXPECT_EQ(Hex(client.Ask(GetRequest(1, "Temp"))), Hex(Reply(kGetParameter, kSuccess, FourReals(10))));
  EXPECT_EQ(Hex(client.Ask(ExtendedGetRequest(1, "Temp"))),
            Hex(Reply(kExtendedGet, kSuccess, Word(0) + FourReals(10))));
  Succeed(client, AcquisitionRequest(1, {"Temp", "Alpha"}));
  EXPECT_EQ(Hex(client.Ask(tests::Request(kGetOnlineValue))),
            Hex(Reply(kGetOnlineValue, kSuccess, Word(2) + Real(10) + Real(20))));
}

TEST_F(TrueAnswersTest, FileWithoutSimulationDoesNotAnswerOnPortSim) {
  std::string file =
      EcuFile("Name=\"REAL\"", Request("2101", "<DataItem Name=\"V\" Ref=\"1\" FirstByte=\"3\"/>"), "");
  const std::size_t begin = file.find("<Simulation");
  file.erase(begin, file.find("</xml>") - begin);
  WritePair("real", file, {{"V", "V"}});
  Start();
  const RawClient client = Connect();
  OpenPair(client, "real");
  ExpectError(client.Ask(GetRequest(1, "V")), 1,
              "Get parameter(1,V) : Error = obj.V  Error : the ECU keeps silent");
  EXPECT_THAT(ErrorTextOf(client.Ask(GetRequest(1, "V"))), HasSubstr("has no Simulation element"));
  Succeed(client, AcquisitionRequest(1, {"V"}));
  ExpectError(client.Ask(tests::Request(kGetOnlineValue)), 2000, "the ECU keeps silent");
}

TEST_F(TrueAnswersTest, ValueLessThanAStepOutOfRangeIsRefused) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  ExpectError(client.Ask(SetRequest(1, "IDLE", -1)), 1, "set parameter(1,IDLE,-1) : Error = ");
  ExpectError(client.Ask(SetRequest(1, "IDLE", 2554)), 1, "set parameter(1,IDLE,2554) : Error = ");
  Succeed(client, SetRequest(1, "IDLE", 2550));
  Succeed(client, SetRequest(1, "IDLE", 0));
}

TEST_F(TrueAnswersTest, NamesSentAgainAndAgainAreAcquiredForEver) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  const std::vector<std::string> names(5000, "N");
  for (int sent = 0; sent < 70000; sent += 5000) Succeed(client, AcquisitionRequest(1, names));
  Succeed(client, AcquisitionRequest(1, {"TMOT"}));
  EXPECT_EQ(Hex(client.Ask(tests::Request(kGetOnlineValue))),
            Hex(Reply(kGetOnlineValue, kSuccess, Word(2) + Real(800) + Real(90))));
}

TEST_F(TrueAnswersTest, EncodingThatIsNotUnderstoodIsRefusedByName) {
  WriteDescription("east.xml", "<?xml version=\"1.0\" encoding=\"ISO-8859-2\"?><xml/>");
  Start();
  const RawClient client = Connect();
  Identify(client);
  ExpectError(client.Ask(SelectRequest("east.xml", "MAP")), 1,
              "select file error : The encoding 'ISO-8859-2' is not understood (east.xml)");
}

TEST_F(TrueAnswersTest, MistakeInAFileIsNamedByLineAndColumn) {
  WriteDescription("cut.xml", DescriptionFile(Section("MAP", "cut_ecu.xml", {})));
  WriteEcu("cut_ecu.xml", "<xml>\n  <qor:Target>\n  </qor:target>\n</xml>");
  Start();
  const RawClient client = Connect();
  Identify(client);
  EXPECT_THAT(ErrorTextOf(client.Ask(SelectRequest("cut.xml", "MAP"))),
              HasSubstr("(cut_ecu.xml, line 3, column "));
}

TEST_F(TrueAnswersTest, SecondFileOfAFunctionIsTracedAsTheOneThatServes) {
  WritePair("other", EcuFile("Name=\"ENGINE\"", kEngineRequests, kEngineAnswers), kEngineData);
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  Select(client, "other.xml", "MAP");
  EXPECT_THAT(server_->WaitFor("   the function ENGINE is served by "),
              HasSubstr("other_ecu.xml from now on"));
}

// Freed memory that the sanitizer keeps is none that the server holds.
TEST_F(TrueAnswersTest, FilesSelectedAgainShareWhatTheyHold) {
  ::setenv("ASAN_OPTIONS", "quarantine_size_mb=1:thread_local_quarantine_size_kb=64", 1);
  Start();
  ::unsetenv("ASAN_OPTIONS");
  const RawClient client = Connect();
  OpenEngine(client);
  const auto select = [&](int times) {
    for (int i = 0; i < times; ++i) Select(client, "engine.xml", "ENGINE_MAP");
  };
  constexpr int kSelections = 2000;
  select(500);
  const long before = server_->ResidentKilobytes();
  select(kSelections);
  EXPECT_LT(server_->ResidentKilobytes() - before, 4 * kSelections);
  WriteEcu("engine_ecu.xml", EcuFile("Name=\"ENGINE\"", kEngineRequests, Answer("2101", "61010C808302")));
  const unsigned changed = Select(client, "engine.xml", "ENGINE_MAP");
  EXPECT_EQ(Hex(client.Ask(GetRequest(changed, "TMOT"))), Hex(Reply(kGetParameter, kSuccess, FourReals(91))));
}

}  // namespace
}  // namespace korval::tests
