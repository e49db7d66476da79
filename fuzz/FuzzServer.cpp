// SPDX-License-Identifier: MIT
#include "fuzz/FuzzServer.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "ecu/session/SessionFactory.h"
#include "fuzz/CheckedTerminal.h"
#include "fuzz/MemorySettings.h"
#include "fuzz/Require.h"
#include "protocol/FieldCodec.h"
#include "protocol/Frame.h"
#include "tests/support/FakePower.h"
#include "tests/support/RecordingListView.h"
#include "tests/support/TempFolder.h"

namespace korval::fuzz {
namespace {

constexpr std::chrono::seconds kLongerThanAnyWait{10};
// Select file, success, file number 1.
const base::ByteBuffer kFirstFileReply{0x00, 0x0A, 0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x00, 0x0E};
constexpr std::size_t kLongestParameters = 65534 - protocol::kShortestFrame;

constexpr char kDescription[] = R"(<?xml version="1.0"?>
<xml>
  <ecu name="ENGINE" url="engine.xml"><data name="EngineSpeed" shortname="Speed"/><data name="Idle" shortname="Idle"/>
    <data name="Vin" shortname="Vin"/><data name="Lamp" shortname="Lamp"/><data name="Ratio" shortname="Ratio"/></ecu>
  <ecu name="SLOW" url="slow.xml"><data name="EngineSpeed" shortname="Speed"/><data name="Idle" shortname="Idle"/></ecu>
  <ecu name="FAULTY" url="faulty.xml"><data name="EngineSpeed" shortname="Speed"/></ecu>
  <ecu name="ABS" url="abs.xml"><data name="Pressure" shortname="Pressure"/></ecu>
  <ecu name="AUTOCAN" url="messaging.xml"/>
</xml>)";

constexpr char kMessaging[] = R"(<xml><messaging Bitrate="500000">
  <Diagnostic Function="ABS" RequestId="740" ResponseId="760"/>
  <Frame Id="1A0" Name="Wheel" CycleMs="10"><DataItem Name="WheelSpeed" FirstByte="1" BitsCount="16" Step="0.01"/></Frame>
</messaging></xml>)";

constexpr char kAbs[] = R"(<xml xmlns:qor="urn:korval:ecu"><qor:Target>
  <Function Name="ABS" Protocol="DiagOnCAN"/>
  <Requests><Request Name="READ"><Sent Bytes="2101"/>
    <Received MinBytes="4"><DataItem Name="Pressure" Ref="1" FirstByte="3" BitsCount="16" Step="0.1"/></Received>
  </Request></Requests></qor:Target><Simulation/></xml>)";

std::string EngineFile(const std::string& function, const std::string& simulation) {
  return R"(<xml xmlns:qor="urn:korval:ecu"><qor:Target><Function Name=")" + function + R"(" Session="81"/>
  <ReferenceData><Item Name="SoftwareVersion" Value="1.3"/></ReferenceData>
  <Requests>
    <Request Name="READ"><Sent Bytes="2101"/><Received MinBytes="11">
      <DataItem Name="EngineSpeed" Ref="1" FirstByte="3" BitsCount="16" Step="0.25" Unit="rpm"/>
      <DataItem Name="Idle" Ref="1" FirstByte="5" BitsCount="6" Step="10" Offset="600"/>
      <DataItem Name="Lamp" Ref="1" FirstByte="5" BitOffset="7" BitsCount="1" Coding="boolean"/>
      <DataItem Name="Ratio" Ref="1" FirstByte="6" BitsCount="32" Coding="float"/>
      <DataItem Name="State" Ref="1" FirstByte="10" Coding="signed"><Text Value="1">on</Text></DataItem>
      <DataItem Name="Date" Ref="1" FirstByte="10" BitsCount="16" Coding="bcd" ByteOrder="little"/></Received></Request>
    <Request Name="VIN"><Sent Bytes="1A90"/><Received MinBytes="2">
      <DataItem Name="Vin" Ref="1" FirstByte="3" BitsCount="32" Coding="ascii"/>
      <DataItem Name="Raw" Ref="1" FirstByte="3" BitsCount="32" Coding="bytes"/></Received></Request>
    <Request Name="WRITE"><Sent Bytes="3B1000000000"><DataItem Name="Idle" FirstByte="3" BitsCount="6" Step="10" Offset="600"/>
      <DataItem Name="Ratio" FirstByte="3" BitsCount="32" Coding="float"/>
      <DataItem Name="Note" FirstByte="3" BitsCount="32" Coding="ascii"/></Sent><Received MinBytes="2"/></Request>
  </Requests></qor:Target>)" +
         simulation + "</xml>";
}

const tests::TempFolder& Files() {
  static const tests::TempFolder folder;
  return folder;
}

void WriteFiles() {
  constexpr char kAnswers[] =
      R"(<Signal Item="EngineSpeed" Wave="sine" Min="0" Max="4000" PeriodMs="1000"/><Dtc Code="1234" Status="20"/>
      <Dtc Code="5678" Status="A0"/><Dtc Code="9ABC" Status="01"/><Answer Request="1A90" Response="5A9041424344"/>
      <Answer Request="2180" Response="618041"/></Simulation>)";
  Files().Write("fuzz.xml", kDescription);
  Files().Write("messaging.xml", kMessaging);
  Files().Write("abs.xml", kAbs);
  Files().Write("engine.xml",
                EngineFile("ENGINE", std::string("<Simulation DtcPerAnswer=\"2\">") + kAnswers));
  Files().Write("slow.xml", EngineFile("SLOW", std::string("<Simulation LatencyMs=\"50\">") + kAnswers));
  Files().Write(
      "faulty.xml",
      EngineFile("FAULTY", std::string("<Simulation><Fault Request=\"READ\" Number=\"2042\" Times=\"2\"/>"
                                       "<Fault Request=\"VIN\" Number=\"2046\" Times=\"1000000\"/>"
                                       "<Fault Init=\"1\" Number=\"1015\" Times=\"3\"/>") +
                               kAnswers));
}

host::ControlParts Parts(tests::CallLog& log, const std::shared_ptr<tests::ManualEventLoop>& loop) {
  host::ControlParts parts;
  parts.loop = loop;
  parts.terminal = std::make_shared<CheckedTerminal>();
  parts.files = std::make_shared<tests::RecordingListView>();
  parts.data = std::make_shared<tests::RecordingListView>();
  parts.message_box = std::make_shared<tests::FakeMessageBox>(log);
  parts.power = std::make_shared<tests::FakePower>(log);
  parts.settings = std::make_shared<MemorySettings>(
      std::map<std::string, std::string>{{"KorvalAsapServer/Properties/Settings", "9600,n,8,1"},
                                         {"KorvalAsapServer/Properties/AsapFolder", FuzzFolder()},
                                         {"KorvalAsapServer/Properties/KorvFolder", FuzzFolder()},
                                         {"KorvalAsapServer/Properties/comAutoStart", "-1"}});
  parts.application_folder = FuzzFolder();
  return parts;
}

}  // namespace

const std::string& FuzzFolder() {
  static const std::string path = [] {
    WriteFiles();
    return Files().Path();
  }();
  return path;
}

std::shared_ptr<viator3::Session> SimulatedSession(const std::shared_ptr<base::EventLoop>& loop) {
  ecu::SessionEnvironment environment;
  environment.loop = loop;
  environment.port = "SIM";
  return ecu::CreateSession(environment);
}

FuzzServer::FuzzServer() {
  host::ControlParts parts = Parts(log_, loop_);
  parts.status = status_;
  parts.tcp_server = socket_;
  parts.serial_port = serial_;
  parts.create_session = [loop = loop_] { return SimulatedSession(loop); };
  control_ = host::ServerControl::Create(std::move(parts));
  Require(control_->Initialise(), "the server starts");
  control_->Console().SetDebugTrace(true);
  control_->Show();
  ConnectClient();
}

FuzzServer::~FuzzServer() { Terminate(); }

base::ByteBuffer FuzzServer::Framed(std::uint16_t code, base::ByteView parameters) {
  parameters = parameters.first(std::min(parameters.size(), kLongestParameters));
  base::ByteBuffer frame;
  frame.SetLength(4);
  frame.Append(parameters);
  if (parameters.size() % 2 != 0) frame.Append(0);
  frame.SetWord(0, static_cast<std::uint16_t>(frame.Length() + 2));
  frame.SetWord(2, code);
  std::uint32_t sum = 0;
  for (std::size_t i = 0; i < frame.Length(); i += 2) sum += frame.Word(i);
  frame.SetLength(frame.Length() + 2);
  frame.SetWord(frame.Length() - 2, static_cast<std::uint16_t>(sum & 0xFFFFU));
  return frame;
}

void FuzzServer::Select(const std::string& section) {
  base::ByteBuffer identity;
  protocol::AppendWord(identity, 0x0201);
  protocol::AppendString(identity, "fuzz");
  base::ByteBuffer file;
  protocol::AppendString(file, "fuzz.xml");
  protocol::AppendString(file, section);
  protocol::AppendWord(file, 0);
  SendOverTcp(Framed(2, {}));
  SendOverTcp(Framed(20, identity.View()));
  SendOverTcp(Framed(3, file.View()));
}

void FuzzServer::SendOverTcp(const base::ByteBuffer& bytes) {
  if (socket_->HasClient()) socket_->Arrive(bytes);
}

void FuzzServer::SendOverSerial(const base::ByteBuffer& bytes) { serial_->Arrive(bytes); }

void FuzzServer::Report(std::uint8_t event) {
  serial_->Report(static_cast<protocol::CommEvent>(1000 + event % 16));
}

void FuzzServer::LoseClient() {
  if (socket_->HasClient()) socket_->Leave();
}

// The caller of an operation holds the control through it, as the window does.
void FuzzServer::Reset() {
  if (const auto held = control_) held->ResetAll();
}

void FuzzServer::Terminate() {
  if (!control_) return;
  control_->Terminate();
  control_.reset();
}

void FuzzServer::RequireGoodSession() {
  loop_->Advance(kLongerThanAnyWait);
  if (!control_) return;
  ConnectClient();
  socket_->TakeReplyCount();
  SendOverTcp(Framed(50, {}));
  Select("ENGINE");
  Require(socket_->TakeReplyCount() == 4, "a new client is answered");
  Require(socket_->LastReply() == kFirstFileReply, "a new client can select a file");
}

}  // namespace korval::fuzz
