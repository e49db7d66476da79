// SPDX-License-Identifier: MIT
// What a client writes stands in replies as it came, and in the trace so that nobody can take it for a line
// of the server's own.
#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

using namespace std::string_literals;

/// A name with a NUL in it, and how the trace shows it.
const std::string kNulName = "Un\0known"s;
const std::string kShownNulName = "Un\\x00known";

class ClientTextTest : public ServerBench {
 protected:
  /// The trace up to the answer of a harmless request.
  Lines TraceOfSession(const RawClient& client) {
    client.Ask(HarmlessRequest());
    return server_->TraceUntil("switching");
  }
};

TEST_F(ClientTextTest, ANulIsPartOfANameInEveryReply) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  for (const std::string& request :
       {GetRequest(1, kNulName), SetRequest(1, kNulName, 1), ExtendedGetRequest(1, kNulName),
        ExtendedSetRequest(1, kNulName, "1"), AcquisitionRequest(1, {kNulName}),
        ExtendedGetRequest(1, "qorrequest("s + kNulName + ")"), GetRequest(9, kNulName),
        ExtendedSetRequest(9, kNulName, "1"), SelectRequest("engine.xml", kNulName),
        SelectRequest(kNulName, "ENGINE_MAP"), ExtendedSetRequest(1, "xcanframe", "00000123\0\0"s)}) {
    SCOPED_TRACE(Hex(request));
    const std::string reply = client.Ask(request);
    EXPECT_EQ(StatusOf(reply), kError);
    EXPECT_THAT(ErrorTextOf(reply), HasSubstr("\0"s));
  }
}

TEST_F(ClientTextTest, NothingBehindANulIsMissingInTheReply) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(
      Hex(client.Ask(GetRequest(9, kNulName))),
      Hex(ErrorReply(kGetParameter, 1, "get parameter(9," + kNulName + ") : Error unknown Emulator LUN")));
  EXPECT_THAT(ErrorTextOf(client.Ask(GetRequest(1, kNulName))),
              HasSubstr("(1," + kNulName + ") : Error = obj." + kNulName + "  Error : "));
}

TEST_F(ClientTextTest, ANulIsPartOfANameInEveryTraceLine) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  client.Ask(GetRequest(1, kNulName));
  EXPECT_THAT(server_->WaitFor("Get parameter"),
              HasSubstr("(1," + kShownNulName + ") : Error = obj." + kShownNulName));
  client.Ask(SetRequest(1, kNulName, 1));
  EXPECT_EQ(server_->WaitFor("set parameter"), "set parameter(1," + kShownNulName + ",1)");
  client.Ask(AcquisitionRequest(1, {kNulName}));
  EXPECT_THAT(server_->WaitFor("set acq para"), HasSubstr("[" + kShownNulName));
  client.Ask(SelectRequest("engine.xml", kNulName));
  EXPECT_EQ(server_->WaitFor("select file"), "select file(engine.xml," + kShownNulName + ",0)");
  EXPECT_EQ(server_->WaitFor("   error : "), "   error : Binary file '" + kShownNulName + "' not found");
}

TEST_F(ClientTextTest, NobodyWritesALineThatIsNotHis) {
  Start();
  const RawClient client = Connect();
  Identify(client);
  client.Ask(SelectRequest("x\r\nRemote reboot asked ...\r\n.xml", "\n\rexit()"));
  EXPECT_EQ(server_->WaitFor("select file"),
            R"(select file(x\x0D\x0ARemote reboot asked ...\x0D\x0A.xml,\x0A\x0Dexit(),0))");
  const Lines lines = TraceOfSession(client);
  EXPECT_THAT(lines, Not(::testing::Contains(::testing::StartsWith("Remote"))));
  EXPECT_THAT(lines, Not(::testing::Contains("exit()")));
}

TEST_F(ClientTextTest, NobodyTakesBackWhatStandsInTheTrace) {
  Start();
  const RawClient client = Connect();
  client.Send("AA\b\b\b\x7F");
  EXPECT_EQ(server_->WaitFor("Error : "), R"(Error : Invalid asap frame (AA\x08\x08\x08\x7F))");
}

TEST_F(ClientTextTest, NobodySteersTheReadersTerminal) {
  Start();
  const RawClient client = Connect();
  client.Send("AA\x1B[2J\x9B\x81\x8D\x8F\x90\x9D\tZ");
  // 9B is a quotation mark on the wire; the others are what windows-1252 leaves open.
  EXPECT_EQ(server_->WaitFor("Error : "),
            "Error : Invalid asap frame (AA\\x1B[2J\u203A\\x81\\x8D\\x8F\\x90\\x9D\\x09Z)");
}

TEST_F(ClientTextTest, TheReplyBearsTheNameAsItCame) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  const std::string name = "a\r\n\x1B[2Jb\x9D";
  EXPECT_EQ(Hex(client.Ask(GetRequest(9, name))),
            Hex(ErrorReply(kGetParameter, 1, "get parameter(9," + name + ") : Error unknown Emulator LUN")));
}

TEST_F(ClientTextTest, WhatADebuggedValueHoldsIsShownToo) {
  WritePair("text",
            EcuFile("Name=\"TEXT\"",
                    R"(<Request Name="R"><Sent Bytes="2101"/><Received MinBytes="3">
                       <DataItem Name="Text" Ref="1" FirstByte="3" BitsCount="24" Coding="ascii"/></Received></Request>)",
                    R"(<Answer Request="2101" Response="61010D0A1B"/>)"),
            {{"Text", "Text"}});
  Start({"--debug"});
  const RawClient client = Connect();
  OpenPair(client, "text");
  EXPECT_EQ(StatusOf(client.Ask(ExtendedSetRequest(1, "Text", "a\nb"))), kError);
  EXPECT_EQ(server_->WaitFor("extended set parameter"), R"(extended set parameter(1,Text,2,a\x0Ab))");
}

}  // namespace
}  // namespace korval::tests
