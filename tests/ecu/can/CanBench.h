// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/Failure.h"
#include "base/XmlFile.h"
#include "ecu/ecufile/EcuFile.h"
#include "ecu/isotp/IsoTpParameters.h"
#include "ecu/session/SessionFactory.h"
#include "ecu/simulation/IsoTpEcu.h"
#include "tests/ecu/can/ModelCanBus.h"
#include "tests/support/Await.h"
#include "tests/support/SessionInput.h"

namespace korval::ecu {

/// A session on a model CAN bus with a simulated ECU at its other end.
class CanBench {
 public:
  static constexpr char kIdentifiers[] =
      "Name='ABS' Protocol='DiagOnCAN' RequestId='7E0' ResponseId='7E8' KeepAliveMs='0' ";
  static constexpr char kRequests[] =
      "<Request Name='READ'><Sent Bytes='2101'/><Received MinBytes='4'>"
      "<DataItem Name='Speed' Ref='1' FirstByte='3' BitsCount='16' Step='0.5'/></Received></Request>"
      "<Request Name='READ_LONG'><Sent Bytes='2102'/><Received MinBytes='40'>"
      "<DataItem Name='Text' Ref='1' FirstByte='3' BitsCount='304' Coding='ascii'/></Received></Request>"
      "<Request Name='WRITE_LONG'><Sent Bytes='3B03'>"
      "<DataItem Name='Text' FirstByte='3' BitsCount='304' Coding='ascii'/></Sent></Request>";
  static constexpr char kSimulation[] =
      "<Simulation><Signal Item='Speed' Value='12.5'/>"
      "<Signal Item='Text' Value='the quick brown fox jumps over the dog'/></Simulation>";

  /// `attributes` go into the Function element, `simulation` stands behind it.
  explicit CanBench(const std::string& attributes = kIdentifiers, const std::string& simulation = kSimulation)
      : text("<xml><qor:Target><Function " + attributes + "/><Requests>" + kRequests +
             "</Requests></qor:Target>" + simulation + "</xml>") {
    ConnectEcu();
    tests::Await(session->SetPort(session->Port()));
    session->OfferEcuFile(tests::EcuFileOf("abs.xml", base::LoadXmlText(text, "abs.xml")));
  }

  void ConnectEcu() {
    node = bus.Open();
    const auto file = ReadEcuFile(base::LoadXmlText(text, "abs.xml"));
    const FunctionDescription& function = file->Function();
    const auto parameters = IsoTpParameters::OfTester(function, function.Can());
    if (!parameters) return;
    ecu = std::make_unique<IsoTpEcu>(loop, std::make_shared<SimulatedEcu>(file, loop->Now()),
                                     parameters->OfOtherSide(),
                                     [this](const CanFrame& frame) { node->Send(frame); });
    CanBus::Events events;
    events.on_frame = [this](const CanFrame& frame) { ecu->FrameArrived(frame); };
    events.on_sent = [this] { ecu->FramesSent(); };
    node->SetEvents(std::move(events));
  }
  void DisconnectEcu() {
    node.reset();
    ecu.reset();
  }

  std::shared_ptr<viator3::Ecu> Abs() { return session->EcuByFunction("ABS"); }
  /// The answer in hexadecimal, or the failure's number.
  std::string Send(const std::string& hex) {
    base::ByteBuffer answer;
    try {
      tests::Await(Abs()->Send(base::ByteBuffer::FromHex(hex), answer));
      return answer.ToHex();
    } catch (const base::Failure& failure) {
      description = failure.Description();
      return std::to_string(failure.Number());
    }
  }

  std::string text;
  std::shared_ptr<tests::ManualEventLoop> loop = std::make_shared<tests::ManualEventLoop>();
  tests::ModelCanBus bus{loop};
  std::unique_ptr<CanBus> node;
  std::unique_ptr<IsoTpEcu> ecu;
  std::string description;             ///< of the last failure
  std::vector<std::int32_t> bitrates;  ///< with which the session opened its bus
  std::vector<std::string> notes;
  std::shared_ptr<viator3::Session> session = CreateSession(Environment());

 private:
  SessionEnvironment Environment() {
    SessionEnvironment environment;
    environment.loop = loop;
    environment.port = "CAN:model:can0";
    environment.open_can_bus = [this](const std::string&, const std::string&, std::int32_t rate) {
      bitrates.push_back(rate);
      return bus.Open();
    };
    environment.on_note = [this](const std::string& note) { notes.push_back(note); };
    return environment;
  }
};

}  // namespace korval::ecu
