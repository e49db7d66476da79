// SPDX-License-Identifier: MIT
#include "ecu/ecufile/FunctionReader.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ecu/ecufile/AttributeReader.h"

namespace korval::ecu {
namespace {

// Of ISO 14230-4: every ECU that exhaust regulations are about.
constexpr std::uint8_t kFunctionalAddress = 0x33;

KLineDescription::Init InitOf(std::string_view name) {
  if (name == "slow") return KLineDescription::Init::kSlow;
  return name == "none" ? KLineDescription::Init::kNone : KLineDescription::Init::kFast;
}

KLineDescription::Echo EchoOf(std::string_view name) {
  if (name == "on") return KLineDescription::Echo::kOn;
  return name == "off" ? KLineDescription::Echo::kOff : KLineDescription::Echo::kAutomatic;
}

std::optional<bool> ModemLineOf(std::string_view name) {
  if (name == "on") return true;
  return name == "off" ? std::optional(false) : std::nullopt;
}

KLineDescription::LLine LLineOf(std::string_view name) {
  if (name == "rts") return KLineDescription::LLine::kRts;
  return name == "rts-inverted" ? KLineDescription::LLine::kRtsInverted : KLineDescription::LLine::kNone;
}

KLineDescription::WakeUp WakeUpOf(std::string_view name) {
  if (name == "break") return KLineDescription::WakeUp::kBreak;
  return name == "byte" ? KLineDescription::WakeUp::kByte : KLineDescription::WakeUp::kAutomatic;
}

KLineDescription::Header HeaderOf(std::string_view name) {
  using Header = KLineDescription::Header;
  if (name == "format") return Header::kFormat;
  if (name == "format-length") return Header::kFormatLength;
  if (name == "addresses") return Header::kAddresses;
  return name == "addresses-length" ? Header::kAddressesLength : Header::kAutomatic;
}

void ReadAddressing(const pugi::xml_node& node, TransportDescription& description) {
  const std::string addressing = node.attribute("Addressing").value();
  if (addressing == "extended" || addressing == "normal") {
    description.extended_addressing = addressing == "extended";
  } else {
    description.unknown_addressing = addressing;
  }
}

TransportDescription::Number ReadPadding(const pugi::xml_node& node) {
  if (std::string_view(node.attribute("Padding").value()) == "none") return TransportDescription::kNoPadding;
  const auto value = HexAttribute(node, "Padding");
  if (!value || *value > 0xFF) return std::nullopt;
  return static_cast<std::int32_t>(*value);
}

}  // namespace

FunctionDescription ReadFunction(const pugi::xml_node& node) {
  FunctionDescription function;
  function.name = node.attribute("Name").value();
  function.ecu = node.attribute("Ecu").as_string(function.name.c_str());
  function.protocol = node.attribute("Protocol").as_string(function.protocol.c_str());
  function.address = ByteAttribute(node, "Address", function.address);
  function.tester = ByteAttribute(node, "Tester", function.tester);
  if (const auto session = HexAttribute(node, "Session"); session && *session <= 0xFF) {
    function.session = static_cast<std::uint8_t>(*session);
  }
  function.keep_alive = MillisecondsAttribute(node, "KeepAliveMs", function.keep_alive, 0, 3600000);
  function.repeats = OptionalIntegerAttribute(node, "Repeats", 0, 10);
  function.timing = ReadTiming(node);
  function.links = {ReadKLine(node, function.address), ReadTransport(node)};
  return function;
}

KLineDescription ReadKLine(const pugi::xml_node& node, std::uint8_t address) {
  KLineDescription kline;
  kline.init = InitOf(node.attribute("Init").value());
  kline.echo = EchoOf(node.attribute("Echo").value());
  kline.rts = ModemLineOf(node.attribute("Rts").value());
  kline.dtr = ModemLineOf(node.attribute("Dtr").value());
  kline.l_line = LLineOf(node.attribute("LLine").value());
  kline.wake_up = WakeUpOf(node.attribute("WakeUp").value());
  kline.header = HeaderOf(node.attribute("Header").value());
  kline.functional = FlagAttribute(node, "Functional");
  kline.init_address = ByteAttribute(node, "InitAddress", kline.functional ? kFunctionalAddress : address);
  kline.baud = IntegerAttribute(node, "Baud", kline.baud, 1, 4000000);
  const auto speed = HexAttribute(node, "SessionBaud");
  if (speed && *speed >= 1 && *speed <= 0xFF) kline.session_baud = static_cast<std::uint8_t>(*speed);
  return kline;
}

Timing ReadTiming(const pugi::xml_node& node) {
  Timing timing;
  for (const TimingParameter& parameter : kTimingParameters) {
    timing.*parameter.value =
        OptionalIntegerAttribute(node, parameter.attribute, parameter.lowest, parameter.highest);
  }
  return timing;
}

TransportDescription ReadTransport(const pugi::xml_node& node) {
  TransportDescription description;
  description.request_id = CanIdentifierAttribute(node, "RequestId");
  description.response_id = CanIdentifierAttribute(node, "ResponseId");
  ReadAddressing(node, description);
  description.padding = ReadPadding(node);
  for (const TransportParameter& parameter : kTransportParameters) {
    description.*parameter.value =
        OptionalIntegerAttribute(node, parameter.attribute, parameter.lowest, parameter.highest);
  }
  return description;
}

}  // namespace korval::ecu
