// SPDX-License-Identifier: MIT
// The client's program against a server that follows a script: what it sends, prints and ends with.
#include <csignal>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/ByteBuffer.h"
#include "tests/apps/asap3/ClientProcess.h"
#include "tests/apps/asap3/FakeServer.h"
#include "tests/support/TempFolder.h"
#include "tests/system/SerialLine.h"

namespace korval::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using Frames = std::vector<std::string>;

const std::string kInit = "000600020008";
const std::string kIdentify = "0010001402010005617361703300F80D";
const std::string kSelect = "001C0003000A656E67696E652E786D6C0006454E47494E450000B22B";
const std::string kExit = "000600320038";
const std::string kGetSpeed = "0010000E000100055370656564001CF9";
const std::string kOnline = "000600130019";

const std::string kInitDone = "000800020000000A";
const std::string kIdentified =
    "002C001400000201001F4B6F7276616C204173617033207365727665722056657273696F6E20322E30009685";
const std::string kSelected = "000A000300000001000E";
const std::string kExited = "000800320000003A";
const std::string kSpeed = "0018000E0000444B1000444B1000444B100000000000FD07";  // 812.25
const std::string kExtendedSet = "000800730000007B";
const std::string kUnknownData =
    "0038000EFFFF0001002C"
    "47657420706172616D6574657228312C4E6F706529"  // Get parameter(1,Nope)
    "203A204572726F72203D206E6F20737563682064617461"
    "F233";
const std::string kUnanswered;

struct Outcome {
  int status = 0;
  std::string output;
  std::string errors;
  Frames requests;
};

Outcome RunAlone(const std::vector<std::string>& arguments) {
  ClientProcess client(arguments);
  Outcome outcome;
  outcome.status = client.ExitStatus();
  outcome.output = client.Output();
  outcome.errors = client.Errors();
  return outcome;
}

/// Runs a command against a server that gives the answers one by one.
Outcome RunWith(const std::vector<std::string>& arguments, const Frames& answers) {
  FakeServer server(answers);
  std::vector<std::string> all{"--port", std::to_string(server.Port())};
  all.insert(all.end(), arguments.begin(), arguments.end());
  Outcome outcome = RunAlone(all);
  outcome.requests = server.Requests();
  return outcome;
}

/// The same for a command on a file, with the session around it.
Outcome RunOnFile(const std::vector<std::string>& arguments, const Frames& answers) {
  std::vector<std::string> all{"--file", "engine.xml", "--section", "ENGINE"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  Frames session{kInitDone, kIdentified, kSelected};
  session.insert(session.end(), answers.begin(), answers.end());
  session.push_back(kExited);
  return RunWith(all, session);
}

/// The requests of a session on a file.
auto IsSession(const Frames& requests) {
  Frames session{kInit, kIdentify, kSelect};
  session.insert(session.end(), requests.begin(), requests.end());
  session.push_back(kExit);
  return ElementsAreArray(session);
}

std::string HexOf(const std::string& bytes) {
  return base::HexText({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

std::string BytesOf(const std::string& hex) {
  const base::ByteBuffer bytes = base::ByteBuffer::FromHex(hex);
  return {bytes.View().begin(), bytes.View().end()};
}

TEST(CommandLineTest, IdentifyHoldsASessionAndShowsTheServer) {
  const Outcome text = RunWith({"identify"}, {kInitDone, kIdentified, kExited});
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.output, "Korval Asap3 server Version 2.0 (ASAP3 2.1)\n");
  EXPECT_EQ(text.errors, "");
  EXPECT_THAT(text.requests, ElementsAre(kInit, kIdentify, kExit));

  const Outcome json = RunWith({"--json", "identify"}, {kInitDone, kIdentified, kExited});
  EXPECT_EQ(json.output, "{\"name\":\"Korval Asap3 server Version 2.0\",\"version\":\"2.1\"}\n");
}

TEST(CommandLineTest, GetSelectsTheFileAndShowsEachValue) {
  const Outcome text = RunOnFile({"get", "Speed", "Speed"}, {kSpeed, kSpeed});
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.output, "Speed = 812.25\nSpeed = 812.25\n");
  EXPECT_THAT(text.requests, IsSession({kGetSpeed, kGetSpeed}));

  const Outcome json = RunOnFile({"--json", "get", "Speed"}, {kSpeed});
  EXPECT_EQ(json.output,
            "{\"name\":\"Speed\",\"value\":812.25,\"minimum\":812.25,\"maximum\":812.25,\"increment\":0}\n");
}

TEST(CommandLineTest, WhatAServerWritesDoesNotSteerTheTerminal) {
  const std::string answer = "0016000EFFFF0001000A610D0A1B5B324A009D62ADEA";  // a CR LF ESC [2J NUL 9D b
  const Outcome error = RunOnFile({"get", "Speed"}, {answer});
  EXPECT_EQ(error.status, 1);
  EXPECT_EQ(error.errors, "asap3: error 1: a\\x0D\\x0A\\x1B[2J\\x00\\x9Db\n");

  const std::string value = "0016007200000002000A610D0A1B5B324A009D62AE50";
  EXPECT_EQ(RunOnFile({"xget", "Vin"}, {value}).output, "Vin = a\\x0D\\x0A\\x1B[2J\\x00\\x9Db\n");
  EXPECT_EQ(
      RunOnFile({"--json", "xget", "Vin"}, {value}).output,
      "{\"name\":\"Vin\",\"type\":\"string\",\"value\":\"a\\u000D\\u000A\\u001B[2J\\u0000\\u009Db\"}\n");
}

TEST(CommandLineTest, TheAddressTravelsWithTheSelection) {
  const Outcome outcome = RunOnFile({"get", "--address", "16", "Speed"}, {kSpeed});
  EXPECT_EQ(outcome.requests.at(2), "001C0003000A656E67696E652E786D6C0006454E47494E450010B23B");
}

TEST(CommandLineTest, SetWritesAReal) {
  const Outcome text = RunOnFile({"set", "IdleSpeed", "850"}, {"0008000F00000017"});
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.output, "IdleSpeed set to 850\n");
  EXPECT_THAT(text.requests, IsSession({"0018000F0001000949646C65537065656400445480009723"}));

  const Outcome json = RunOnFile({"--json", "set", "IdleSpeed", "850"}, {"0008000F00000017"});
  EXPECT_EQ(json.output, "{\"name\":\"IdleSpeed\",\"value\":850}\n");
}

TEST(CommandLineTest, ExtendedGetShowsEveryType) {
  const Frames answers = {
      "001A00720000000040000000400000004000000000000000C08C",
      "002A0072000000013FB999999999999A3FB999999999999A3FB999999999999A0000000000000000262C",
      "00120072000000020005393020B043009D6B", "000800720000007A"};
  const Outcome text = RunOnFile({"xget", "Vin", "Vin", "Vin", "Vin"}, answers);
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.output, "Vin = 2\nVin = 0.1\nVin = 90 \u00B0C\nVin = no value\n");
  EXPECT_EQ(text.requests.at(3), "000E00720001000356696E00C4ED");

  const Outcome json = RunOnFile({"--json", "xget", "Vin", "Vin", "Vin", "Vin"}, answers);
  EXPECT_EQ(
      json.output,
      "{\"name\":\"Vin\",\"type\":\"real\",\"value\":2,\"minimum\":2,\"maximum\":2,\"increment\":0}\n"
      "{\"name\":\"Vin\",\"type\":\"real8\",\"value\":0.1,\"minimum\":0.1,\"maximum\":0.1,\"increment\":0}\n"
      "{\"name\":\"Vin\",\"type\":\"string\",\"value\":\"90 \u00B0C\"}\n"
      "{\"name\":\"Vin\",\"type\":null,\"value\":null}\n");
}

TEST(CommandLineTest, ExtendedSetWritesTheTypeGiven) {
  const Outcome real = RunOnFile({"xset", "Idle", "-5"}, {kExtendedSet});
  EXPECT_EQ(real.output, "Idle set to -5\n");
  EXPECT_THAT(real.requests, IsSession({"001400730001000449646C650000C0A0000076F5"}));

  const Outcome real8 = RunOnFile({"--json", "xset", "--type", "real8", "Idle", "850.5"}, {kExtendedSet});
  EXPECT_EQ(real8.output, "{\"name\":\"Idle\",\"value\":850.5}\n");
  EXPECT_THAT(real8.requests, IsSession({"001800730001000449646C650001408A9400000000008AE4"}));

  const Outcome string = RunOnFile({"--json", "xset", "--type", "string", "Idle", "\u00D6l"}, {kExtendedSet});
  EXPECT_EQ(string.output, "{\"name\":\"Idle\",\"value\":\"\u00D6l\"}\n");
  EXPECT_THAT(string.requests, IsSession({"001400730001000449646C6500020002D66C8CC5"}));
}

/// readdtc finds 2; P1234 with status 20, U0100 with status A0.
const Frames kTwoCodes = {"001A00720000000040000000400000004000000000000000C08C",
                          "001A0072000000004591A0004591A0004591A00000000000B13F",
                          "001A00720000000042000000420000004200000000000000C68C",
                          "001A00720000000040000000400000004000000000000000C08C",
                          "001A00720000000047410000474100004741000000000000D64F",
                          "001A00720000000043200000432000004320000000000000C9EC"};

TEST(CommandLineTest, TroubleCodesAreReadAndWalked) {
  const Outcome text = RunOnFile({"dtc"}, kTwoCodes);
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.output, "code   hex   status\nP1234  1234  20\nU0100  C100  A0\n");
  EXPECT_THAT(
      text.requests,
      IsSession({"001200720001000772656164647463009BC9", "0012007200010007647463636F6465009CC7",
                 "001400720001000964746373746174757300244D", "00120072000100076E65787464746300AED9",
                 "0012007200010007647463636F6465009CC7", "001400720001000964746373746174757300244D"}));

  const Outcome json = RunOnFile({"--json", "dtc"}, kTwoCodes);
  EXPECT_EQ(json.output,
            "{\"code\":\"P1234\",\"hex\":\"1234\",\"status\":\"20\"}\n"
            "{\"code\":\"U0100\",\"hex\":\"C100\",\"status\":\"A0\"}\n");
}

TEST(CommandLineTest, NoTroubleCodesAreSaid) {
  const std::string none = "001A00720000000000000000000000000000000000000000008C";
  EXPECT_EQ(RunOnFile({"dtc"}, {none}).output, "no trouble codes\n");
  const Outcome json = RunOnFile({"--json", "dtc"}, {none});
  EXPECT_EQ(json.output, "");
  EXPECT_EQ(json.status, 0);
}

TEST(CommandLineTest, ACountOfTroubleCodesBeyondReasonIsRefused) {
  const Outcome outcome =
      RunOnFile({"dtc"}, {"001A0072000000007149F2CA7149F2CA7149F2CA000000002CC5"});  // 1E30
  EXPECT_EQ(outcome.status, 3);
  EXPECT_EQ(outcome.errors, "asap3: The server's answer to 'readdtc' is no number that fits\n");
}

TEST(CommandLineTest, ARawRequestIsSentAndItsAnswerFetched) {
  const Frames answers = {kExtendedSet, "0016007200000002000A363138303431343234330B8B"};
  const Outcome text = RunOnFile({"raw", "2180"}, answers);
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.output, "6180414243\n");
  EXPECT_THAT(text.requests, IsSession({"001C00730001000A6B77707265717565737400020004323138309534",
                                        "001400720001000A6B7770726571756573742AC4"}));

  EXPECT_EQ(RunOnFile({"--json", "raw", "2180"}, answers).output,
            "{\"request\":\"2180\",\"answer\":\"6180414243\"}\n");
}

TEST(CommandLineTest, CanFramesAreSent) {
  const Outcome text = RunOnFile({"can", "000007DF"}, {kExtendedSet});
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.output, "sent 000007DF\n");
  EXPECT_THAT(text.requests, IsSession({"00200073000100097863616E6672616D6500000200083030303030374446DC34"}));
  EXPECT_EQ(RunOnFile({"--json", "can", "000007DF"}, {kExtendedSet}).output, "{\"frames\":\"000007DF\"}\n");
}

const std::string kChosen = "0008000C00000014";
const std::string kOnlineValues = "0012001300000002444B1000FF0000005372";  // 812.25 and no value
const std::string kChooseBoth = "001A000C0001000000020005537065656400000356696E00E16F";

TEST(CommandLineTest, WatchShowsReadingsUntilTheCount) {
  const Outcome outcome = RunOnFile({"watch", "--interval", "0", "--count", "2", "Speed", "Vin"},
                                    {kChosen, kOnlineValues, kOnlineValues});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.requests, IsSession({kChooseBoth, kOnline, kOnline}));
  std::istringstream lines(outcome.output);
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line, "   seconds         Speed           Vin");
  for (int row = 0; row < 2; ++row) {
    std::getline(lines, line);
    EXPECT_THAT(line, HasSubstr("        812.25      no value")) << row;
  }
  EXPECT_FALSE(std::getline(lines, line));
}

TEST(CommandLineTest, WatchWritesJsonAndACsvFile) {
  const TempFolder folder;
  const std::string path = folder.Path("run.csv");
  const Outcome outcome =
      RunOnFile({"--json", "watch", "--count", "1", "--csv", path, "Speed", "Vin"}, {kChosen, kOnlineValues});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, StartsWith("{\"seconds\":"));
  EXPECT_THAT(outcome.output, HasSubstr("\"values\":{\"Speed\":812.25,\"Vin\":null}}\n"));
  std::ifstream file(path, std::ios::binary);
  std::stringstream csv;
  csv << file.rdbuf();
  EXPECT_THAT(csv.str(), StartsWith("seconds,Speed,Vin\r\n0"));
  EXPECT_THAT(csv.str(), HasSubstr(",812.25,\r\n"));
}

TEST(CommandLineTest, ACsvFileThatCannotBeWrittenEndsTheSessionInOrder) {
  const Outcome outcome = RunOnFile({"watch", "--csv", "/nowhere/run.csv", "Speed"}, {});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.errors, HasSubstr("/nowhere/run.csv cannot be written"));
  EXPECT_THAT(outcome.requests, IsSession({}));
}

TEST(CommandLineTest, AnInterruptEndsTheWatchInOrder) {
  for (const int signal : {SIGINT, SIGTERM}) {
    FakeServer server({kInitDone, kIdentified, kSelected, kChosen, kOnlineValues, kExited});
    ClientProcess client({"--port", std::to_string(server.Port()), "--file", "engine.xml", "--section",
                          "ENGINE", "watch", "--interval", "3600000", "Speed", "Vin"});
    server.WaitForRequests(5);
    client.Signal(signal);
    EXPECT_EQ(client.ExitStatus(), 0);
    EXPECT_THAT(client.Output(), HasSubstr("812.25"));
    EXPECT_EQ(server.Requests().back(), kExit);
  }
}

TEST(CommandLineTest, AnotherNumberOfValuesThanChosenIsRefused) {
  const Outcome outcome = RunOnFile({"watch", "--count", "1", "Speed"}, {kChosen, kOnlineValues});
  EXPECT_EQ(outcome.status, 3);
  EXPECT_EQ(
      outcome.errors,
      "asap3: The server answered 2 values, not the 1 chosen: an earlier session was not ended; try again\n");
  EXPECT_EQ(outcome.requests.back(), kExit);
}

TEST(CommandLineTest, SendPassesOneFrameWithoutASession) {
  const Outcome text = RunWith({"send", "000600320038"}, {kExited});
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.output, kExited + "\n");
  EXPECT_THAT(text.requests, ElementsAre(kExit));
  EXPECT_EQ(RunWith({"--json", "send", "000600320038"}, {kExited}).output,
            "{\"answer\":\"" + kExited + "\"}\n");
}

TEST(CommandLineTest, SendShowsAnAnswerThatIsAnErrorOrDamaged) {
  const Outcome refused = RunWith({"send", "00060004000A"}, {"0008000456565662"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.output, "0008000456565662\n");
  EXPECT_EQ(refused.errors, "asap3: status 22102: unknown command\n");

  const Outcome damaged = RunWith({"send", "000600020008"}, {"000800020000000B"});
  EXPECT_EQ(damaged.status, 3);
  EXPECT_EQ(damaged.output, "000800020000000B\n");
  EXPECT_THAT(damaged.errors, HasSubstr("checksum"));
}

TEST(CommandLineTest, AnErrorReplyIsPrintedWithItsCodeAndTheSessionEnded) {
  const Outcome text = RunOnFile({"get", "Nope", "Speed"}, {kUnknownData});
  EXPECT_EQ(text.status, 1);
  EXPECT_EQ(text.output, "");
  EXPECT_EQ(text.errors, "asap3: error 1: Get parameter(1,Nope) : Error = no such data\n");
  EXPECT_THAT(text.requests, IsSession({"000E000E000100044E6F7065BEF5"}));

  const Outcome json = RunOnFile({"--json", "get", "Nope"}, {kUnknownData});
  EXPECT_EQ(json.status, 1);
  EXPECT_EQ(json.output,
            "{\"error\":\"reply\",\"status\":65535,\"code\":1,"
            "\"message\":\"Get parameter(1,Nope) : Error = no such data\"}\n");
  EXPECT_EQ(json.errors, "");
}

TEST(CommandLineTest, ARefusalIsPrintedWithItsStatus) {
  const Outcome outcome = RunWith({"identify"}, {kInitDone, "000800142343235F", kExited});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "asap3: status 9027: refused in this session state\n");
  EXPECT_THAT(outcome.requests, ElementsAre(kInit, kIdentify, kExit));
}

TEST(CommandLineTest, AFailedInitIsPrintedWithTheNumberOfTheLibraryAndOpensNoSession) {
  const Outcome outcome = RunWith({"identify"}, {"00140002FFFF03E900076E6F206C696E6B00674E"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.requests, ElementsAre(kInit));
  EXPECT_EQ(outcome.errors, "asap3: error 1001: no link\n");
}

TEST(CommandLineTest, NoAnswerInTimeIsStatus3AndTheSessionEnded) {
  const Outcome outcome = RunWith({"--timeout", "50", "identify"}, {kInitDone, kUnanswered});
  EXPECT_EQ(outcome.status, 3);
  EXPECT_EQ(outcome.errors, "asap3: No answer from the server within 50 ms\n");
  EXPECT_THAT(outcome.requests, ElementsAre(kInit, kIdentify, kExit));
}

TEST(CommandLineTest, ADamagedAnswerIsStatus3AndTheSessionEnded) {
  const Outcome outcome = RunOnFile({"get", "Speed"}, {"0008000E00000017"});
  EXPECT_EQ(outcome.status, 3);
  EXPECT_THAT(outcome.errors, HasSubstr("0008000E00000017 is damaged"));
  EXPECT_THAT(outcome.requests, IsSession({kGetSpeed}));
}

TEST(CommandLineTest, AServerThatClosesIsStatus3) {
  const Outcome outcome = RunWith({"--json", "identify"}, {kInitDone});
  EXPECT_EQ(outcome.status, 3);
  EXPECT_EQ(outcome.output, "{\"error\":\"link\",\"message\":\"The connection to the server is lost\"}\n");
  EXPECT_EQ(outcome.errors, "");
}

TEST(CommandLineTest, NobodyThereIsStatus3) {
  std::string port;
  {
    const FakeServer gone({});
    port = std::to_string(gone.Port());
  }
  const Outcome outcome = RunAlone({"--port", port, "identify"});
  EXPECT_EQ(outcome.status, 3);
  EXPECT_THAT(outcome.errors, StartsWith("asap3: No connection to 127.0.0.1 port " + port + ": "));
}

TEST(CommandLineTest, WrongUsageIsStatus2WithAHintAndNothingIsSent) {
  const Outcome outcome = RunWith({"get", "Speed"}, {});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors,
            "asap3: get needs --file DESCRIPTION and --section NAME\nasap3 --help tells how it is used\n");
}

TEST(CommandLineTest, HelpAndVersionGoToStandardOutput) {
  const Outcome help = RunAlone({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.output, StartsWith("asap3 talks to an ASAP3 server"));
  EXPECT_EQ(help.errors, "");
  const Outcome version = RunAlone({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_THAT(version.output, testing::MatchesRegex("asap3 [0-9.]+\n"));
}

TEST(CommandLineTest, ASerialLineCarriesASession) {
  const SerialLine line;
  ClientProcess client({"--serial", line.Device(), "--serial-settings", "19200,n,8,1", "identify"});
  Frames requests;
  for (const std::string& answer : {kInitDone, kIdentified, kExited}) {
    requests.push_back(HexOf(line.Receive()));
    line.Send(BytesOf(answer));
  }
  EXPECT_EQ(client.ExitStatus(), 0);
  EXPECT_EQ(client.Output(), "Korval Asap3 server Version 2.0 (ASAP3 2.1)\n");
  EXPECT_THAT(requests, ElementsAre(kInit, kIdentify, kExit));
}

TEST(CommandLineTest, ASerialDeviceThatIsNotThereIsStatus3) {
  const Outcome outcome = RunAlone({"--serial", "/dev/korval-none", "identify"});
  EXPECT_EQ(outcome.status, 3);
  EXPECT_THAT(outcome.errors, StartsWith("asap3: Serial device /dev/korval-none cannot be opened: "));
}

}  // namespace
}  // namespace korval::tests
