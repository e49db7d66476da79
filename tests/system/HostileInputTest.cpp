// SPDX-License-Identifier: MIT
// Whatever a client sends and whatever stands in a file: the server neither ends nor hangs nor grows, and
// the next good session works.
#include <array>
#include <filesystem>

#include <sys/stat.h>

#include "tests/system/HostileBench.h"

namespace korval::tests {
namespace {

using HostileInputTest = HostileBench;

TEST_F(HostileInputTest, RandomBytesAndDamagedFrames) {
  Start();
  const RawClient client = Connect();
  ByteSource source(20240117);
  for (int round = 0; round < 500; ++round) {
    std::string bytes = source.Bytes(300);
    if (bytes.empty()) bytes = "?";
    SCOPED_TRACE(Hex(bytes));
    Throw(client, bytes);
    Throw(client, source.DamagedFrame());
    ASSERT_FALSE(HasFailure());
  }
  ExpectGoodSession(client);
  StopInOrder();
}

TEST_F(HostileInputTest, RandomFieldsInValidFramesOfAnOpenSession) {
  Start({"--debug"});
  const RawClient client = Connect();
  ByteSource source(7041776);
  for (int round = 0; round < 1000; ++round) {
    if (round % 20 == 0) {
      Succeed(client, Request(kExit));
      OpenEngine(client);
    }
    const std::string frame = source.ValidFrame();
    SCOPED_TRACE(Hex(frame));
    Throw(client, frame);
    ASSERT_FALSE(HasFailure());
  }
  ExpectGoodSession(client);
  StopInOrder();
}

TEST_F(HostileInputTest, BytesThatLookLikeTraceCommands) {
  Start();
  const RawClient client = Connect();
  for (const std::string& bytes : {std::string("AA\b\b\b\b\b\bB"), std::string("AA\r\nError : fake"),
                                   std::string("AA\0\0\x1B[2J", 8), std::string("\xFF\xFE\xC0\x80")}) {
    client.Send(bytes);
    server_->WaitFor("Error : Inv");
  }
  client.Send(std::string(200, '\b'));
  server_->WaitFor("Error : Inv");
  ExpectGoodSession(client);
}

TEST_F(HostileInputTest, LengthFieldsThatLie) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  for (const std::uint16_t code : {kSelectFile, kSetAcquisition, kSwitching, kGetParameter, kSetParameter,
                                   kIdentify, kExtendedGet, kExtendedSet})
    for (const char* const fields :
         {"", "00", "FFFF", "0001", "0001 FFFF", "0001 FFFF FFFF FFFF", "0001 0001", "0001 0003 4E4E",
          "0001 0064 FFFF", "0001 0064 FFFF FFFF", "7FFF 8000 8001", "0001 0001 4E00 0002 FFFF",
          "0001 0001 4E00 0001 7FF0", "FFFE FFFE"}) {
      std::string bytes = FromHex(fields);
      if (bytes.size() % 2 != 0) bytes.push_back('\0');
      SCOPED_TRACE(std::to_string(code) + ": " + fields);
      Throw(client, Request(code, bytes));
    }
  ExpectGoodSession(client);
}

TEST_F(HostileInputTest, TheLongestNamesAreAnsweredWithinTheLongestReply) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  const std::string name(60000, 'n');
  for (const std::string& request :
       {GetRequest(1, name), ExtendedGetRequest(1, name), SetRequest(1, name, 1),
        AcquisitionRequest(1, {name}), SelectRequest(name, "x"), SelectRequest("engine.xml", name),
        ExtendedGetRequest(1, "qorrequest(" + name + ")"),
        ExtendedSetRequest(1, "xcanframe", name + "odd")}) {
    const std::string reply = ThrowLarge(client, request);
    EXPECT_EQ(StatusOf(reply), kError);
    EXPECT_LE(reply.size(), 65534U);
    EXPECT_NE(ErrorTextOf(reply), "");
  }
  ExpectGoodSession(client);
  StopInOrder();
}

TEST_F(HostileInputTest, TheLongestFramesOfAllAreAnsweredOrRefused) {
  Start();
  RawClient client = Connect();
  client.Send(Request(4, std::string(65534 - 6, 'x')));
  client.Send(Word(0xFFFF) + std::string(65533, 'x'));
  client.Send(std::string(1 << 20, 'x'));
  client.Close();
  server_->WaitFor("close WinSock");
  server_->WaitForPort();
  const RawClient next = Connect();
  ExpectGoodSession(next);
}

TEST_F(HostileInputTest, NamesThatLeadOutOfTheirFolder) {
  const std::string description = DescriptionFile(Section("MAP", "engine_ecu.xml", kEngineData));
  folder_.Write("outside.xml", description);
  std::filesystem::create_directory(folder_.Path("asap/inner"));
  std::filesystem::create_directory(folder_.Path("asap2"));
  folder_.Write("asap2/beside.xml", description);
  Start();
  const RawClient client = Connect();
  Identify(client);
  for (const std::string& file : {std::string("..\\outside.xml"),
                                  std::string("../outside.xml"),
                                  std::string("inner\\..\\..\\outside.xml"),
                                  std::string("inner/../../outside.xml"),
                                  folder_.Path("outside.xml"),
                                  std::string("..\\asap2\\beside.xml"),
                                  std::string("..\\..\\..\\..\\..\\..\\..\\..\\etc\\passwd"),
                                  std::string("/etc/passwd"),
                                  std::string("\\etc\\passwd"),
                                  std::string("C:\\outside.xml"),
                                  std::string("file:///etc/passwd"),
                                  std::string("\\\\host\\share\\x.xml"),
                                  std::string(".."),
                                  std::string("."),
                                  std::string(),
                                  std::string("inner"),
                                  std::string("engine.xml\0.txt", 15),
                                  std::string("con"),
                                  std::string("engine.xml\\"),
                                  std::string(300, '/') + "etc/passwd"})
    ExpectSelectError(client, file, "MAP");
  ExpectGoodSession(client);
}

TEST_F(HostileInputTest, UrlsThatLeadOutOfTheirFolder) {
  folder_.Write("outside_ecu.xml", EcuFile("Name=\"OUT\"", kEngineRequests, kEngineAnswers));
  std::string sections;
  const std::vector<std::string> urls = {"..\\outside_ecu.xml",
                                         "../outside_ecu.xml",
                                         folder_.Path("outside_ecu.xml"),
                                         "x\\..\\..\\outside_ecu.xml",
                                         "/etc/passwd",
                                         "",
                                         ".",
                                         "..",
                                         "absent.xml"};
  for (std::size_t index = 0; index < urls.size(); ++index)
    sections += Section("S" + std::to_string(index), urls[index], kEngineData);
  WriteDescription("urls.xml", DescriptionFile(sections));
  WriteDescription("can.xml", DescriptionFile(Section("MAP", "engine_ecu.xml", kEngineData) +
                                              Section("AUTOCAN", "../outside_ecu.xml", {})));
  Start();
  const RawClient client = Connect();
  Identify(client);
  for (std::size_t index = 0; index < urls.size(); ++index)
    ExpectSelectError(client, "urls.xml", "S" + std::to_string(index));
  ExpectSelectError(client, "can.xml", "MAP");
  ExpectGoodSession(client);
}

TEST_F(HostileInputTest, WhatIsNoFileIsNotWaitedFor) {
  ASSERT_EQ(mkfifo(folder_.Path("asap/pipe.xml").c_str(), 0600), 0);
  ASSERT_EQ(mkfifo(folder_.Path("korv/pipe_ecu.xml").c_str(), 0600), 0);
  std::filesystem::create_directory(folder_.Path("asap/folder.xml"));
  WriteDescription("to_pipe.xml", DescriptionFile(Section("MAP", "pipe_ecu.xml", kEngineData)));
  Start();
  const RawClient client = Connect();
  Identify(client);
  for (const std::string file : {"pipe.xml", "folder.xml", "to_pipe.xml"})
    ExpectSelectError(client, file, "MAP");
  ExpectGoodSession(client);
}

TEST_F(HostileInputTest, AHugeFileIsLoadedAndLetGo) {
  DataNames data;
  std::string items;
  for (int index = 0; index < 50000; ++index) {
    const std::string name = "Value" + std::to_string(index);
    data.emplace_back(name, name);
    items.append("<DataItem Ref=\"1\" FirstByte=\"3\" Name=\"").append(name).append("\"/>");
  }
  WritePair("huge",
            EcuFile("Name=\"HUGE\"",
                    "<Request Name=\"R\"><Sent Bytes=\"2101\"/><Received MinBytes=\"3\">" + items +
                        "</Received></Request>",
                    "<Answer Request=\"2101\" Response=\"61012A\"/>"),
            data);
  Start();
  const RawClient client = Connect();
  for (int count = 0; count < 3; ++count) {
    OpenPair(client, "huge");
    EXPECT_EQ(Hex(client.Ask(GetRequest(1, "Value49999"))),
              Hex(Reply(kGetParameter, kSuccess, FourReals(42))));
    Succeed(client, Request(kExit));
  }
  ExpectGoodSession(client);
  StopInOrder();
}

struct HostileFile {
  std::string name;
  std::string content;
};

std::string Repeated(const std::string& text, int times) {
  std::string all;
  for (int count = 0; count < times; ++count) all += text;
  return all;
}

std::vector<HostileFile> HostileFiles() {
  const std::string bomb_entities =
      R"(<!DOCTYPE xml [<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;&a;&a;&a;&a;&a;&a;"><!ENTITY c "&b;&b;&b;&b;&b;&b;&b;&b;">
<!ENTITY d "&c;&c;&c;&c;&c;&c;&c;&c;"><!ENTITY e "&d;&d;&d;&d;&d;&d;&d;&d;"><!ENTITY f SYSTEM "file:///etc/passwd">]>)";
  return {
      {"empty", ""},
      {"blank", "   \n"},
      {"no_xml", "this is no XML"},
      {"binary", FromHex("00FF00FE01020304 7F454C46")},
      {"zeros", std::string(100000, '\0')},
      {"cut", R"(<?xml version="1.0"?><xml><ecu name="MAP" url="engine_ec)"},
      {"unclosed", R"(<xml><ecu name="MAP" url="engine_ecu.xml">)"},
      {"crossed", "<xml><a><b></a></b></xml>"},
      {"two_roots", "<a/><b/>"},
      {"other_root", R"(<lmx><ecu name="MAP" url="engine_ecu.xml"/></lmx>)"},
      {"open_deep", Repeated("<a>", 200000)},
      {"deep", "<xml>" + Repeated("<a>", 200000) + Repeated("</a>", 200000) + "</xml>"},
      {"bomb",
       bomb_entities + R"(<xml><ecu name="&e;" url="&f;"><data name="&e;" shortname="&e;"/></ecu></xml>)"},
      {"wrong_encoding", R"(<?xml version="1.0" encoding="UTF-16"?><xml><ecu name="MAPS" url="x"/></xml>)"},
      {"unknown_encoding",
       R"(<?xml version="1.0" encoding="klingon"?><xml><ecu name="MAPS" url="x"/></xml>)"},
      {"bad_utf8",
       "<?xml version=\"1.0\" encoding=\"UTF-8\"?><xml><ecu name=\"\xC3\x28\xFF\" url=\"\xF8\x88\"/></xml>"},
      {"half_utf16", FromHex("FFFE 3C00 7800 6D00 6C")},
      {"many_attributes", "<xml " + Repeated("a=\"1\" ", 50000) + "/>"},
      {"long_name", "<xml><" + std::string(1000000, 'n') + "/></xml>"}};
}

TEST_F(HostileInputTest, AnyContentAsDescriptionFile) {
  for (const auto& [name, content] : HostileFiles()) WriteDescription(name + ".xml", content);
  Start();
  const RawClient client = Connect();
  for (const auto& [name, content] : HostileFiles()) {
    Identify(client);
    ExpectSelectError(client, name + ".xml", "MAP");
    ExpectGoodSession(client);
  }
  StopInOrder();
}

TEST_F(HostileInputTest, AnyContentAsEcuFile) {
  for (const auto& [name, content] : HostileFiles()) WritePair(name, content, kEngineData);
  Start();
  const RawClient client = Connect();
  for (const auto& [name, content] : HostileFiles()) {
    Identify(client);
    ExpectSelectError(client, name + ".xml", "MAP");
    ExpectGoodSession(client);
  }
  StopInOrder();
}

TEST_F(HostileInputTest, AnyNumbersInAnEcuFile) {
  const std::vector<std::string> numbers = {"0",   "-1",  "65", "1000000000", "99999999999999999999",
                                            "x",   "",    " 1", "1e9",        "0x10",
                                            "nan", "inf", "-0"};
  const std::vector<std::string> attributes = {"FirstByte", "BitOffset", "BitsCount", "Step",
                                               "Offset",    "Coding",    "ByteOrder"};
  std::string items;
  DataNames data;
  for (const std::string& attribute : attributes)
    for (const std::string& number : numbers) {
      const std::string name = "I" + std::to_string(data.size());
      items +=
          "<DataItem Name=\"" + name + "\" Ref=\"1\" FirstByte=\"3\" " + attribute + "=\"" + number + "\"/>";
      data.emplace_back(name, name);
    }
  const std::string requests =
      "<Request Name=\"R\"><Sent Bytes=\"2101\"/><Received MinBytes=\"-5\">" + items +
      "</Received></Request><Request Name=\"W\"><Sent Bytes=\"3B01\">" + items +
      "</Sent><Received MinBytes=\"99999999999\"/></Request><Request/><Request Name=\"R\"/>" +
      "<Request Name=\"ODD\"><Sent Bytes=\"21Z\"/><Received><DataItem/></Received></Request>";
  const std::string simulation =
      R"(<Signal/><Signal Item="I0" Wave="sine" Min="nan" Max="inf" PeriodMs="0"/><Signal Item="I1" Wave="?" Value="1e999"/>
         <Dtc/><Dtc Code="XYZ" Status="12345"/><Answer/><Answer Request="Q" Response="R"/><Fault/>
         <Fault Request="R" Number="-7" Times="-1"/><Fault Init="9" Number="x" Times="99999999999999"/>)";
  WritePair("numbers",
            EcuFile("Name=\"NUMBERS\" Address=\"ZZ\" P2Ms=\"-1\" BlockSize=\"1e99\"", requests, simulation),
            data);
  Start();
  const RawClient client = Connect();
  Identify(client);
  EXPECT_GE(client.Ask(SelectRequest("numbers.xml", "MAP")).size(), 8U);
  for (const auto& [name, short_name] : data) {
    client.Ask(GetRequest(1, name));
    client.Ask(SetRequest(1, name, 1e30F));
    client.Ask(ExtendedGetRequest(1, "qortext(R;" + name + ")"));
    client.Ask(ExtendedSetRequest(1, "qorvalue(W;" + name + ")", "1"));
    client.Ask(AcquisitionRequest(1, {name}));
  }
  for (const std::string name : {"qornbrequests", "qorrequest(5)", "qornbdata(R)", "qorexecreq(W)",
                                 "qorexecreq(ODD)", "qorinit", "readdtc", "dtccode"})
    client.Ask(ExtendedGetRequest(1, name));
  EXPECT_EQ(client.Ask(Request(kGetOnlineValue)).substr(2, 2), Word(kGetOnlineValue));
  ExpectGoodSession(client);
  StopInOrder();
}

}  // namespace
}  // namespace korval::tests
