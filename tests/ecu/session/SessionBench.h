// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/ByteBuffer.h"
#include "base/Failure.h"
#include "base/XmlFile.h"
#include "ecu/session/SessionFactory.h"
#include "tests/support/Await.h"
#include "tests/support/ManualEventLoop.h"
#include "tests/support/SessionInput.h"

namespace korval::ecu {

inline constexpr char kEngineRequests[] =
    "<Request Name='READ'><Sent Bytes='2101'/><Received MinBytes='6'>"
    "<DataItem Name='Speed' Ref='1' FirstByte='3' BitsCount='16' Step='0.25' Unit='rpm'/>"
    "<DataItem Name='Temp' Ref='1' FirstByte='5' Offset='-40' Unit='\xC2\xB0"
    "C'/>"
    "<DataItem Name='State' Ref='1' FirstByte='6' BitOffset='6' BitsCount='2'>"
    "<Text Value='0'>stopped</Text><Text Value='2'>running</Text></DataItem></Received></Request>"
    "<Request Name='READ_LIMIT'><Sent Bytes='2102'/><Received MinBytes='5'>"
    "<DataItem Name='Limit' Ref='1' FirstByte='3' Step='10'/>"
    "<DataItem Name='Active' Ref='1' FirstByte='4' BitsCount='1' Coding='boolean'/>"
    "<DataItem Name='Speed' Ref='1' FirstByte='5'/></Received></Request>"
    "<Request Name='WRITE_LIMIT'><Sent Bytes='3B100580'><DataItem Name='Limit' FirstByte='3' Step='10' "
    "Unit='km/h'/>"
    "<DataItem Name='Active' FirstByte='4' BitsCount='1' Coding='boolean'/></Sent><Received "
    "MinBytes='2'/></Request>"
    "<Request Name='WRITE_LIMIT_TOO'><Sent Bytes='3B1100'><DataItem Name='Limit' "
    "FirstByte='3'/></Sent></Request>"
    "<Request Name='WRITE_STATE'><Sent Bytes='3B1200'><DataItem Name='State' FirstByte='3' BitOffset='6' "
    "BitsCount='2'>"
    "<Text Value='0'>stopped</Text><Text Value='2'>running</Text></DataItem>"
    "<DataItem Name='Mode' FirstByte='3' BitsCount='2'/></Sent></Request>";

/// A session on the simulated ECU with a clock that the test turns. `simulation` is what stands behind
/// "<Simulation " in the ECU file of the function ENGINE.
class SessionBench {
 public:
  static std::string FileText(const std::string& function, const std::string& simulation = ">",
                              const std::string& requests = kEngineRequests) {
    return "<xml xmlns:qor='urn:korval:ecu'><qor:Target><Function " + function +
           "/><ReferenceData><Item Name='Version' Value='1.3'/></ReferenceData><Requests>" + requests +
           "</Requests></qor:Target><Simulation " + simulation + "</Simulation></xml>";
  }

  explicit SessionBench(const std::string& simulation = ">",
                        const std::string& function = "Name='ENGINE' Ecu='Engine control'",
                        const std::string& requests = kEngineRequests) {
    tests::Await(session->SetPort(session->Port()));
    Offer("engine.xml", FileText(function, simulation, requests));
  }

  void Offer(const std::string& path, const std::string& text) {
    session->OfferEcuFile(tests::EcuFileOf(path, base::LoadXmlText(text, path)));
  }
  std::shared_ptr<viator3::Ecu> Engine() { return session->EcuByFunction("ENGINE"); }
  std::shared_ptr<viator3::Request> Request(const std::string& name) {
    for (const auto& request : Engine()->RequestList()) {
      if (request->Name() == name) return request;
    }
    return nullptr;
  }
  std::shared_ptr<viator3::DataItem> Item(const std::string& request, const std::string& name) {
    for (const auto& item : Request(request)->Data()) {
      if (item->Name() == name) return item;
    }
    return nullptr;
  }
  std::string Send(const std::string& hex) {
    base::ByteBuffer answer;
    tests::Await(Engine()->Send(base::ByteBuffer::FromHex(hex), answer));
    return answer.ToHex();
  }

  std::shared_ptr<tests::ManualEventLoop> loop = std::make_shared<tests::ManualEventLoop>();
  /// CAN frames as "identifier:data".
  std::vector<std::string> frames;
  std::shared_ptr<viator3::Session> session =
      CreateSession({loop, "SIM", "", [this](std::int32_t identifier, base::ByteView data) {
                       frames.push_back(std::to_string(identifier) + ":" + base::HexText(data));
                     }});
};

/// The number of the failure that `step` raises; 0 when it raises none.
template <typename Step>
std::int32_t NumberOf(Step step, std::string* description = nullptr) {
  try {
    step();
    return 0;
  } catch (const base::Failure& failure) {
    if (description != nullptr) *description = failure.Description();
    return failure.Number();
  }
}

}  // namespace korval::ecu
