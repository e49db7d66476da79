// SPDX-License-Identifier: MIT
#include "ecu/ecufile/SimulationReader.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "ecu/description/ErrorNumbers.h"
#include "ecu/ecufile/AttributeReader.h"

namespace korval::ecu {
namespace {

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

}  // namespace

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

}  // namespace korval::ecu
