// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "MemoryWire.h"
#include "base/XmlFile.h"
#include "ecu/ecufile/EcuFile.h"
#include "ecu/session/SessionFactory.h"
#include "ecu/simulation/KLineEcu.h"
#include "tests/support/Await.h"
#include "tests/support/ManualEventLoop.h"
#include "tests/support/SessionInput.h"

namespace korval::ecu {

inline constexpr char kKLineRequests[] =
    "<Request Name='READ'><Sent Bytes='2101'/><Received MinBytes='6'>"
    "<DataItem Name='Speed' Ref='1' FirstByte='3' BitsCount='16' Step='0.25'/>"
    "<DataItem Name='Temp' Ref='1' FirstByte='5' Offset='-40'/>"
    "<DataItem Name='State' Ref='1' FirstByte='6'/></Received></Request>"
    "<Request Name='PRESENT'><Sent Bytes='3E'/></Request>"
    "<Request Name='TELL_LIMIT' NoAnswer='1'><Sent Bytes='3B1105'/></Request>"
    "<Request Name='WRITE_LIMIT'><Sent Bytes='3B1005'><DataItem Name='Limit' "
    "FirstByte='3'/></Sent></Request>";

/// The frame of a message between tester F1 and ECU 10, with addresses and the length in the format byte.
inline std::string FromTester(const std::string& message) {
  return BuildFrame({true, false}, 0x10, 0xF1, base::ByteBuffer::FromHex(message).View()).ToHex();
}
inline std::string FromEcu(const std::string& message) {
  return BuildFrame({true, false}, 0xF1, 0x10, base::ByteBuffer::FromHex(message).View()).ToHex();
}

/// A session on a K-line in memory, with the simulated ECU at its far end, and a clock that the test turns.
class KLineBench {
 public:
  static constexpr char kPort[] = "/dev/ttyK";
  static constexpr char kUsualSimulation[] =
      "><Signal Item='Speed' Value='800'/><Signal Item='Temp' Value='90'/><Signal Item='State' Value='2'/>";

  static std::string FileText(const std::string& function, const std::string& simulation) {
    return "<xml xmlns:qor='urn:korval:ecu'><qor:Target><Function Name='ENGINE' Ecu='Engine control' " +
           function + "/><Requests>" + kKLineRequests + "</Requests></qor:Target><Simulation " + simulation +
           "</Simulation></xml>";
  }

  /// `function` and `simulation` are what stands in these elements of the ECU file, the latter with the end
  /// of its start tag.
  explicit KLineBench(const std::string& function = "", const std::string& simulation = kUsualSimulation)
      : text_(FileText(function, simulation)), description(ReadEcuFile(Parse(text_))) {
    PlugEcuIn();
    OpenSession();
  }

  /// A new session on the port; the one before goes.
  void OpenSession() {
    session = CreateSession(Environment());
    tests::Await(session->SetPort(kPort));
    session->OfferEcuFile(tests::EcuFileOf("engine.xml", Parse(text_)));
  }

  /// Ends the session, and waits for what it still has to say.
  void CloseSession() {
    tests::Await(session->Close());
    AwaitLeave();
  }
  /// Until sessions that have gone have said what they still had to say.
  void AwaitLeave() {
    loop->RunUntil(loop->Now() + std::chrono::seconds(2), [this] { return !ports_->IsTakingLeave(); });
  }

  static base::XmlDocument Parse(const std::string& text) { return base::LoadXmlText(text, "engine.xml"); }

  /// The simulated ECU listens on the line, with nothing of what it knew before.
  void PlugEcuIn() {
    ecu = std::make_shared<KLineEcu>(loop, description->Function(),
                                     std::make_shared<SimulatedEcu>(description, loop->Now()),
                                     [this](base::ByteView bytes) { line->EcuWrites(bytes); });
    line->ecu_hears = [this](base::ByteView bytes) { ecu->BytesArrived(bytes); };
    line->ecu_baud = [this] { return ecu ? ecu->Baud() : line->baud; };
  }
  void PullEcuOut() {
    ecu.reset();
    line->ecu_hears = [](base::ByteView) {};
  }

  std::shared_ptr<viator3::Ecu> Engine() { return session->EcuByFunction("ENGINE"); }
  /// Sends a request in hexadecimal digits; the answer, or the number and text of the failure.
  std::string Send(const std::string& request) {
    try {
      base::ByteBuffer answer;
      tests::Await(Engine()->Send(base::ByteBuffer::FromHex(request), answer));
      return answer.ToHex();
    } catch (const base::Failure& failure) {
      return std::to_string(failure.Number()) + " " + failure.Description();
    }
  }
  /// The number alone.
  std::string NumberOf(const std::string& request) { return Send(request).substr(0, 4); }
  std::string TesterSaid() const { return line->Said(MemoryLine::Who::kTester); }

  std::shared_ptr<tests::ManualEventLoop> loop = std::make_shared<tests::ManualEventLoop>();
  std::shared_ptr<MemoryLine> line = std::make_shared<MemoryLine>(loop);

 private:
  std::string text_;
  std::shared_ptr<KLinePorts> ports_ = std::make_shared<KLinePorts>();

 public:
  std::shared_ptr<const EcuDescription> description;
  std::shared_ptr<KLineEcu> ecu;
  std::shared_ptr<viator3::Session> session;
  std::vector<std::string> notes;

 private:
  SessionEnvironment Environment() {
    SessionEnvironment environment;
    environment.loop = loop;
    environment.open_kline_wire = [this](const std::string&) { return std::make_unique<MemoryWire>(line); };
    environment.kline_ports = ports_;
    environment.on_note = [this](const std::string& note) { notes.push_back(note); };
    return environment;
  }
};

}  // namespace korval::ecu
