// SPDX-License-Identifier: MIT
#include "ecu/description/EcuDescription.h"

#include <string_view>
#include <utility>

#include "base/Failure.h"
#include "ecu/description/AttributeReader.h"
#include "ecu/description/ErrorNumbers.h"

namespace korval::ecu {
namespace {

// Of ISO 14230-4: every ECU that exhaust regulations are about.
constexpr std::uint8_t kFunctionalAddress = 0x33;

// Calls `read` with each element at xml/qor:Target/<group>/<name>, in the order of the file.
template <typename Read>
void ForEach(const pugi::xml_document& document, const char* group, const char* name, Read read) {
  for (const pugi::xml_node& target : document.child("xml").children("qor:Target")) {
    for (const pugi::xml_node& holder : target.children(group)) {
      for (const pugi::xml_node& node : holder.children(name)) read(node);
    }
  }
}

pugi::xml_node FunctionNode(const pugi::xml_document& document) {
  for (const pugi::xml_node& target : document.child("xml").children("qor:Target")) {
    for (const pugi::xml_node& function : target.children("Function")) {
      if (function.attribute("Name")) return function;
    }
  }
  return {};
}

pugi::xml_node SimulationNode(const pugi::xml_document& document) {
  return document.child("xml").child("Simulation");
}

std::uint8_t ByteAttribute(const pugi::xml_node& node, const char* name, std::uint8_t fallback) {
  const auto value = HexAttribute(node, name);
  return value && *value <= 0xFF ? static_cast<std::uint8_t>(*value) : fallback;
}

FunctionDescription::Init InitOf(std::string_view name) {
  if (name == "slow") return FunctionDescription::Init::kSlow;
  return name == "none" ? FunctionDescription::Init::kNone : FunctionDescription::Init::kFast;
}

FunctionDescription ReadFunction(const pugi::xml_node& node) {
  FunctionDescription function;
  function.name = node.attribute("Name").value();
  function.ecu = node.attribute("Ecu").as_string(function.name.c_str());
  function.protocol = node.attribute("Protocol").as_string(function.protocol.c_str());
  function.address = ByteAttribute(node, "Address", function.address);
  function.tester = ByteAttribute(node, "Tester", function.tester);
  function.init = InitOf(node.attribute("Init").value());
  function.kline = KLineDescription::Read(node);
  function.init_address =
      ByteAttribute(node, "InitAddress", function.kline.functional ? kFunctionalAddress : function.address);
  function.baud = IntegerAttribute(node, "Baud", function.baud, 1, 4000000);
  function.transport = TransportDescription::Read(node);
  if (const auto session = HexAttribute(node, "Session"); session && *session <= 0xFF) {
    function.session = static_cast<std::uint8_t>(*session);
  }
  function.keep_alive = MillisecondsAttribute(node, "KeepAliveMs", function.keep_alive, 0, 3600000);
  function.repeats = OptionalIntegerAttribute(node, "Repeats", 0, 10);
  function.timing = Timing::Read(node);
  return function;
}

SignalDescription::Wave WaveOf(std::string_view name) {
  using Wave = SignalDescription::Wave;
  if (name == "ramp") return Wave::kRamp;
  if (name == "sine") return Wave::kSine;
  if (name == "square") return Wave::kSquare;
  return name == "noise" ? Wave::kNoise : Wave::kConstant;
}

SignalDescription ReadSignal(const pugi::xml_node& node) {
  SignalDescription signal;
  signal.item = node.attribute("Item").value();
  signal.wave = WaveOf(node.attribute("Wave").value());
  signal.value = node.attribute("Value").as_string("0");
  signal.min = NumberAttribute(node, "Min").value_or(0);
  signal.max = NumberAttribute(node, "Max").value_or(0);
  signal.period = MillisecondsAttribute(node, "PeriodMs", signal.period, 1, 86400000);
  return signal;
}

std::optional<WireFault> WireFaultOf(std::string_view name) {
  if (name == "late") return WireFault::kLate;
  if (name == "missing") return WireFault::kMissing;
  if (name == "damaged") return WireFault::kDamaged;
  if (name == "pending") return WireFault::kPending;
  if (name == "foreign") return WireFault::kForeign;
  return std::nullopt;
}

SimulationDescription ReadSimulation(const pugi::xml_node& node) {
  SimulationDescription simulation;
  simulation.latency = MillisecondsAttribute(node, "LatencyMs", simulation.latency, 0, 3600000);
  simulation.dtc_per_answer = static_cast<std::size_t>(IntegerAttribute(node, "DtcPerAnswer", 80, 1, 255));
  if (const auto key_bytes = BytesAttribute(node, "KeyBytes"); key_bytes && key_bytes->Length() == 2) {
    simulation.key_bytes = {key_bytes->At(0), key_bytes->At(1)};
  }
  for (const pugi::xml_node& signal : node.children("Signal"))
    simulation.signals.push_back(ReadSignal(signal));
  for (const pugi::xml_node& dtc : node.children("Dtc")) {
    const auto code = HexAttribute(dtc, "Code");
    if (!code || *code > 0xFFFF) continue;
    simulation.dtcs.push_back({static_cast<std::uint16_t>(*code), ByteAttribute(dtc, "Status", 0)});
  }
  for (const pugi::xml_node& answer : node.children("Answer")) {
    auto request = BytesAttribute(answer, "Request");
    auto response = BytesAttribute(answer, "Response");
    if (request && response && !request->Empty()) simulation.answers.push_back({*request, *response});
  }
  for (const pugi::xml_node& fault : node.children("Fault")) {
    SimulationDescription::Fault read;
    read.request = fault.attribute("Request").value();
    read.number = IntegerAttribute(fault, "Number", kNoAnswer, 1, 65535);
    read.times = IntegerAttribute(fault, "Times", 1, 0, 2147483647);
    read.wire = WireFaultOf(fault.attribute("Wire").value());
    if (!read.request.empty() || std::string_view(fault.attribute("Init").value()) == "1") {
      simulation.faults.push_back(std::move(read));
    }
  }
  return simulation;
}

}  // namespace

std::shared_ptr<const EcuDescription> EcuDescription::Load(base::XmlDocument document) {
  return std::make_shared<const EcuDescription>(std::move(document));
}

EcuDescription::EcuDescription(base::XmlDocument document) : document_(std::move(document)) {
  const pugi::xml_node function = FunctionNode(*document_);
  if (!function) {
    throw base::Failure(kNoEcuFile, "The file names no function (xml/qor:Target/Function, attribute Name)");
  }
  function_ = ReadFunction(function);
}

const std::vector<RequestDescription>& EcuDescription::Requests() const {
  if (!requests_) {
    requests_.emplace();
    ForEach(*document_, "Requests", "Request", [this](const pugi::xml_node& node) {
      if (auto request = RequestDescription::Read(node)) requests_->push_back(*std::move(request));
    });
  }
  return *requests_;
}

const std::vector<std::string>& EcuDescription::ReferenceData() const {
  if (!reference_data_) {
    reference_data_.emplace();
    ForEach(*document_, "ReferenceData", "Item", [this](const pugi::xml_node& node) {
      reference_data_->emplace_back(node.attribute("Name").value());
    });
  }
  return *reference_data_;
}

bool EcuDescription::HasSimulation() const { return !SimulationNode(*document_).empty(); }

const SimulationDescription& EcuDescription::Simulation() const {
  if (!simulation_) simulation_ = ReadSimulation(SimulationNode(*document_));
  return *simulation_;
}

}  // namespace korval::ecu
