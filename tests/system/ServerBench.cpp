// SPDX-License-Identifier: MIT
#include "tests/system/ServerBench.h"

#include <algorithm>
#include <csignal>
#include <filesystem>

namespace korval::tests {
namespace {

// Texts of the test's own, so that a reply shows that they were read.
constexpr std::string_view kErrorTexts = R"(<?xml version="1.0" encoding="UTF-8"?>
<errors>
  <error number="1000"><text lang="en">the link is gone</text></error>
  <error number="1001"><text lang="en">no interface is chosen</text></error>
  <error number="1015"><text lang="en">the bus is dead</text></error>
  <error number="2000"><text lang="en">the ECU keeps silent</text></error>
  <error number="2042"><text lang="en">the ECU forgot its start</text></error>
  <error number="2044"><text lang="en">an odd failure</text></error>
  <error number="2045"><text lang="en">the ECU hung up</text></error>
  <error number="2046"><text lang="en">nobody is present</text></error>
</errors>
)";

}  // namespace

const std::string kEngineRequests = R"(
      <Request Name="READ_ENGINE"><Sent Bytes="2101"/><Received MinBytes="6">
        <DataItem Name="EngineSpeed" Ref="1" FirstByte="3" BitsCount="16" Step="0.25" Unit="rpm"/>
        <DataItem Name="CoolantTemp" Ref="1" FirstByte="5" BitsCount="8" Step="1" Offset="-40" Unit="C"/>
        <DataItem Name="EngineState" Ref="1" FirstByte="6" BitOffset="6" BitsCount="2">
          <Text Value="0">stopped</Text><Text Value="1">cranking</Text><Text Value="2">running</Text>
        </DataItem>
      </Received></Request>
      <Request Name="READ_FLAGS"><Sent Bytes="2102"/><Received MinBytes="3">
        <DataItem Name="FuelCut" Ref="1" FirstByte="3" BitOffset="7" BitsCount="1" Coding="boolean"/>
      </Received></Request>
      <Request Name="READ_TEXTS"><Sent Bytes="2103"/><Received MinBytes="3">
        <DataItem Name="SoftwareName" Ref="1" FirstByte="3" BitsCount="40" Coding="ascii"/>
        <DataItem Name="NumericText" Ref="1" FirstByte="8" BitsCount="32" Coding="ascii"/>
        <DataItem Name="BeyondAnswer" Ref="1" FirstByte="40" BitsCount="8"/>
      </Received></Request>
      <Request Name="READ_IDLE"><Sent Bytes="2111"/><Received MinBytes="3">
        <DataItem Name="IdleSpeed" Ref="1" FirstByte="3" BitsCount="8" Step="10" Unit="rpm"/>
      </Received></Request>
      <Request Name="WRITE_IDLE">
        <Sent Bytes="3B1100"><DataItem Name="IdleSpeed" FirstByte="3" BitsCount="8" Step="10" Unit="rpm"/></Sent>
        <Received MinBytes="2"/></Request>
      <Request Name="READ_SILENT"><Sent Bytes="21EE"/><Received MinBytes="3">
        <DataItem Name="SilentValue" Ref="1" FirstByte="3"/>
      </Received></Request>
      <Request Name="READ_HIDDEN"><Sent Bytes="2130"/><Received MinBytes="3">
        <DataItem Name="HiddenValue" FirstByte="3"/>
      </Received></Request>)";

// EngineSpeed 800, CoolantTemp 90, EngineState 2; FuelCut true; "KV1.2" and "12.5".
const std::string kEngineAnswers = R"(
    <Answer Request="2101" Response="61010C808202"/>
    <Answer Request="2102" Response="610201"/>
    <Answer Request="2103" Response="61034B56312E3231322E35"/>
    <Answer Request="2180" Response="6180414243"/>
    <Answer Request="21EE" Response=""/>)";

const DataNames kEngineData = {
    {"EngineSpeed", "N"},      {"CoolantTemp", "TMOT"},    {"EngineState", "STATE"},   {"FuelCut", "CUT"},
    {"SoftwareName", "SW"},    {"NumericText", "NUMTEXT"}, {"BeyondAnswer", "BEYOND"}, {"IdleSpeed", "IDLE"},
    {"SilentValue", "SILENT"}, {"HiddenValue", "HIDDEN"},  {"NotInTheEcu", "MISSING"}};

std::string Section(const std::string& name, const std::string& url, const DataNames& data) {
  std::string text = "  <ecu name=\"" + name + "\" url=\"" + url + "\">\n";
  for (const auto& [data_name, short_name] : data)
    text.append("    <data name=\"")
        .append(data_name)
        .append("\" shortname=\"")
        .append(short_name)
        .append("\"/>\n");
  return text + "  </ecu>\n";
}

std::string DescriptionFile(const std::string& sections) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xml>\n" + sections + "</xml>\n";
}

std::string EcuFile(const std::string& function, const std::string& requests, const std::string& simulation,
                    int latency_ms) {
  return R"(<?xml version="1.0" encoding="UTF-8"?>
<xml xmlns:qor="urn:korval:ecu">
  <qor:Target>
    <Function )" +
         function + R"( Session="" KeepAliveMs="0"/>
    <ReferenceData><Item Name="SoftwareVersion" Value="1.3"/><Item Name="HardwareVersion" Value="7"/></ReferenceData>
    <Requests>)" +
         requests + R"(
    </Requests>
  </qor:Target>
  <Simulation LatencyMs=")" +
         std::to_string(latency_ms) + "\" DtcPerAnswer=\"2\">" + simulation + R"(
  </Simulation>
</xml>
)";
}

ServerBench::ServerBench() {
  std::filesystem::create_directory(folder_.Path("asap"));
  std::filesystem::create_directory(folder_.Path("korv"));
  std::filesystem::create_directory(folder_.Path("server"));
  folder_.Write("server/errors.xml", kErrorTexts);
  folder_.Write("install.ini",
                "[QOR]\nDoNotUseWeb=1\nVersion=7.1\nInstallFolder=" + folder_.Path("server") + "\n");
  WriteDescription("engine.xml", DescriptionFile(Section("ENGINE_MAP", "engine_ecu.xml", kEngineData) +
                                                 "  <ecu name=\"NO_URL\"/>\n"));
  WriteEcu("engine_ecu.xml",
           EcuFile("Name=\"ENGINE\" Ecu=\"Engine control\"", kEngineRequests, kEngineAnswers));
}

void ServerBench::WriteDescription(const std::string& name, std::string_view content) const {
  folder_.Write("asap/" + name, content);
}

void ServerBench::WriteEcu(const std::string& name, std::string_view content) const {
  folder_.Write("korv/" + name, content);
}

void ServerBench::WritePair(const std::string& name, const std::string& ecu_file,
                            const DataNames& data) const {
  WriteDescription(name + ".xml", DescriptionFile(Section("MAP", name + "_ecu.xml", data)));
  WriteEcu(name + "_ecu.xml", ecu_file);
}

std::vector<std::string> ServerBench::SafeOptions() const {
  return {"--headless",
          "--listen",
          "127.0.0.1",
          "--power",
          "dry-run",
          "--settings",
          folder_.Path("settings.ini"),
          "--install-record",
          folder_.Path("install.ini")};
}

std::vector<std::string> ServerBench::StartOptions(const std::vector<std::string>& more_options) const {
  std::vector<std::string> options = SafeOptions();
  const std::vector<std::string> files = {
      "--tcp-port", "0", "--asap-folder", folder_.Path("asap"), "--korv-folder", folder_.Path("korv")};
  options.insert(options.end(), files.begin(), files.end());
  options.insert(options.end(), more_options.begin(), more_options.end());
  if (std::find(options.begin(), options.end(), "--diag-port") == options.end())
    options.insert(options.end(), {"--diag-port", "SIM"});
  return options;
}

void ServerBench::Start(const std::vector<std::string>& more_options) {
  server_.emplace(StartOptions(more_options), folder_.Path("home"));
  port_ = server_->WaitForPort();
}

void ServerBench::StopInOrder() { EXPECT_EQ(server_->Stop(SIGTERM), 0) << server_->StandardError(); }

ServerBench::Lines ServerBench::TraceUntilListening() {
  Lines lines = server_->TraceUntil("Init WinSock : port=");
  const Lines rest = server_->TraceUntil("          > LocalPort=");
  lines.insert(lines.end(), rest.begin(), rest.end());
  return lines;
}

void ServerBench::Succeed(const RawClient& client, const std::string& request) {
  const std::string reply = client.Ask(request);
  ASSERT_EQ(StatusOf(reply), kSuccess) << "to " << Hex(request) << ": " << ErrorTextOf(reply);
}

void ServerBench::ExpectError(const std::string& reply, unsigned number, const std::string& beginning) {
  EXPECT_EQ(StatusOf(reply), kError) << beginning;
  EXPECT_EQ(ErrorNumberOf(reply), number) << beginning;
  EXPECT_THAT(ErrorTextOf(reply), ::testing::StartsWith(beginning));
}

void ServerBench::Identify(const RawClient& client) {
  Succeed(client, Request(kInit));
  Succeed(client, Request(kIdentify, Word(0x0201) + Text("Bench")));
}

unsigned ServerBench::Select(const RawClient& client, const std::string& file, const std::string& section) {
  const std::string reply = client.Ask(SelectRequest(file, section));
  EXPECT_EQ(StatusOf(reply), kSuccess) << ErrorTextOf(reply);
  EXPECT_EQ(reply.size(), 10U);
  return WordAt(reply, 6);
}

void ServerBench::OpenEngine(const RawClient& client) {
  Identify(client);
  ASSERT_EQ(Select(client, "engine.xml", "ENGINE_MAP"), 1U);
}

void ServerBench::OpenPair(const RawClient& client, const std::string& name) {
  Identify(client);
  ASSERT_EQ(Select(client, name + ".xml", "MAP"), 1U);
}

void ServerBench::ExpectGoodSession(const RawClient& client) {
  Succeed(client, Request(kExit));
  OpenEngine(client);
  EXPECT_EQ(Hex(client.Ask(GetRequest(1, "TMOT"))), Hex(Reply(kGetParameter, kSuccess, FourReals(90))));
  Succeed(client, AcquisitionRequest(1, {"N", "CUT"}));
  EXPECT_EQ(Hex(client.Ask(Request(kGetOnlineValue))),
            Hex(Reply(kGetOnlineValue, kSuccess, Word(2) + Real(800) + Real(-1))));
  Succeed(client, Request(kExit));
}

void ServerBench::ExpectSilence(const RawClient& client, std::string_view bytes, std::string_view beginning) {
  client.Send(bytes);
  server_->WaitFor(beginning);
  EXPECT_EQ(Hex(client.Ask(HarmlessRequest())), Hex(Reply(kSwitching, kSuccess)));
}

std::string SelectRequest(const std::string& file, const std::string& section, unsigned address) {
  return Request(kSelectFile, Text(file) + Text(section) + Word(address));
}

std::string GetRequest(unsigned lun, const std::string& name) {
  return Request(kGetParameter, Word(lun) + Text(name));
}

std::string SetRequest(unsigned lun, const std::string& name, float value) {
  return Request(kSetParameter, Word(lun) + Text(name) + Real(value));
}

std::string AcquisitionRequest(unsigned lun, const std::vector<std::string>& names) {
  std::string fields = Word(lun) + Word(100) + Word(static_cast<unsigned>(names.size()));
  for (const std::string& name : names) fields += Text(name);
  return Request(kSetAcquisition, fields);
}

std::string ExtendedGetRequest(unsigned lun, const std::string& name) {
  return Request(kExtendedGet, Word(lun) + Text(name));
}

std::string ExtendedSetRequest(unsigned lun, const std::string& name, const std::string& value) {
  return Request(kExtendedSet, Word(lun) + Text(name) + Word(2) + Text(value));
}

std::string HarmlessRequest() { return Request(kSwitching, Word(7)); }

}  // namespace korval::tests
