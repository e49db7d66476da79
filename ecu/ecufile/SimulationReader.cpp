// SPDX-License-Identifier: MIT
#include "ecu/ecufile/SimulationReader.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "ecu/ecufile/AttributeReader.h"
#include "ecu/ecufile/Grammar.h"

namespace korval::ecu {
namespace {

SignalDescription ReadSignal(const pugi::xml_node& node) {
  using grammar::kSignal;
  SignalDescription signal;
  signal.item = TextAttribute(node, kSignal["Item"]);
  signal.wave = EnumAttribute<SignalDescription::Wave>(node, kSignal["Wave"]);
  signal.value = node.attribute(kSignal["Value"].name).as_string("0");
  signal.min = NumberAttribute(node, kSignal["Min"]).value_or(*kSignal["Min"].fallback);
  signal.max = NumberAttribute(node, kSignal["Max"]).value_or(*kSignal["Max"].fallback);
  signal.period = MillisecondsAttribute(node, kSignal["PeriodMs"]);
  return signal;
}

// None without a code.
std::optional<SimulationDescription::Dtc> ReadDtc(const pugi::xml_node& node) {
  const auto code = HexAttribute(node, grammar::kDtc["Code"]);
  if (!code) return std::nullopt;
  return SimulationDescription::Dtc{static_cast<std::uint16_t>(*code),
                                    ByteAttribute(node, grammar::kDtc["Status"])};
}

// None unless both are bytes and there is a request.
std::optional<SimulationDescription::Answer> ReadAnswer(const pugi::xml_node& node) {
  auto request = BytesAttribute(node, grammar::kAnswer["Request"]);
  auto response = BytesAttribute(node, grammar::kAnswer["Response"]);
  if (!request || !response || request->Empty()) return std::nullopt;
  return SimulationDescription::Answer{*std::move(request), *std::move(response)};
}

// None when it names nothing that could fail.
std::optional<SimulationDescription::Fault> ReadFault(const pugi::xml_node& node) {
  using grammar::kFault;
  SimulationDescription::Fault fault;
  fault.request = TextAttribute(node, kFault["Request"]);
  fault.number = IntegerAttribute(node, kFault["Number"]);
  fault.times = IntegerAttribute(node, kFault["Times"]);
  if (const auto wire = KnownChoice(node, kFault["Wire"])) fault.wire = static_cast<WireFault>(*wire);
  if (fault.request.empty() && !FlagAttribute(node, kFault["Init"])) return std::nullopt;
  return fault;
}

// The children of a kind that can be used, in the order of the file.
template <typename Part>
std::vector<Part> ReadParts(const pugi::xml_node& node, const Element& element,
                            std::optional<Part> (*read)(const pugi::xml_node&)) {
  std::vector<Part> parts;
  for (const pugi::xml_node& child : node.children(element.name)) {
    if (auto part = read(child)) parts.push_back(*std::move(part));
  }
  return parts;
}

}  // namespace

SimulationDescription ReadSimulation(const pugi::xml_node& node) {
  using grammar::kSimulation;
  SimulationDescription simulation;
  simulation.latency = MillisecondsAttribute(node, kSimulation["LatencyMs"]);
  simulation.dtc_per_answer = static_cast<std::size_t>(IntegerAttribute(node, kSimulation["DtcPerAnswer"]));
  const auto key_bytes = BytesAttribute(node, kSimulation["KeyBytes"]);
  if (key_bytes && HasLength(kSimulation["KeyBytes"], key_bytes->Length())) {
    simulation.key_bytes = {key_bytes->At(0), key_bytes->At(1)};
  }
  for (const pugi::xml_node& signal : node.children(grammar::kSignal.name)) {
    simulation.signals.push_back(ReadSignal(signal));
  }
  simulation.dtcs = ReadParts(node, grammar::kDtc, ReadDtc);
  simulation.answers = ReadParts(node, grammar::kAnswer, ReadAnswer);
  simulation.faults = ReadParts(node, grammar::kFault, ReadFault);
  return simulation;
}

}  // namespace korval::ecu
