// SPDX-License-Identifier: MIT
#include "ecu/ecufile/FunctionReader.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "ecu/ecufile/AttributeReader.h"
#include "ecu/ecufile/Grammar.h"

namespace korval::ecu {
namespace {

// Of ISO 14230-4: every ECU that exhaust regulations are about.
constexpr std::uint8_t kFunctionalAddress = 0x33;

using grammar::kFunction;

std::optional<bool> ModemLine(const pugi::xml_node& node, const Attribute& rule) {
  const std::size_t choice = ChoiceAttribute(node, rule);
  return choice < 2 ? std::optional(choice == 0) : std::nullopt;  // the third leaves it as it is
}

std::optional<std::uint8_t> OptionalByte(const pugi::xml_node& node, const Attribute& rule) {
  const auto value = HexAttribute(node, rule);
  return value ? std::optional(static_cast<std::uint8_t>(*value)) : std::nullopt;
}

// An addressing that is not understood is kept, so that nobody is addressed in another way.
void ReadAddressing(const pugi::xml_node& node, TransportDescription& description) {
  const Attribute& rule = kFunction["Addressing"];
  const std::string_view text = TextAttribute(node, rule);
  const auto known = KnownChoice(node, rule);
  if (!known) {
    description.unknown_addressing = text;
  } else if (!text.empty()) {
    description.extended_addressing = *known == 1;
  }
}

TransportDescription::Number ReadPadding(const pugi::xml_node& node) {
  const Attribute& rule = kFunction["Padding"];
  if (std::string_view(TextAttribute(node, rule)) == rule.word) return TransportDescription::kNoPadding;
  const auto value = HexAttribute(node, rule);
  return value ? TransportDescription::Number(static_cast<std::int32_t>(*value)) : std::nullopt;
}

}  // namespace

FunctionDescription ReadFunction(const pugi::xml_node& node) {
  FunctionDescription function;
  function.name = TextAttribute(node, kFunction["Name"]);
  function.ecu = node.attribute(kFunction["Ecu"].name).as_string(function.name.c_str());
  const Attribute& protocol = kFunction["Protocol"];
  function.protocol = node.attribute(protocol.name).as_string(protocol.choices[0]);
  function.address = ByteAttribute(node, kFunction["Address"]);
  function.tester = ByteAttribute(node, kFunction["Tester"]);
  function.session = OptionalByte(node, kFunction["Session"]);
  function.keep_alive = MillisecondsAttribute(node, kFunction["KeepAliveMs"]);
  function.repeats = OptionalInteger(node, kFunction["Repeats"]);
  function.timing = ReadTiming(node);
  function.links = {ReadKLine(node, function.address), ReadTransport(node)};
  return function;
}

KLineDescription ReadKLine(const pugi::xml_node& node, std::uint8_t address) {
  using Link = KLineDescription;
  KLineDescription kline;
  kline.init = EnumAttribute<Link::Init>(node, kFunction["Init"]);
  kline.echo = EnumAttribute<Link::Echo>(node, kFunction["Echo"]);
  kline.rts = ModemLine(node, kFunction["Rts"]);
  kline.dtr = ModemLine(node, kFunction["Dtr"]);
  kline.l_line = EnumAttribute<Link::LLine>(node, kFunction["LLine"]);
  kline.wake_up = EnumAttribute<Link::WakeUp>(node, kFunction["WakeUp"]);
  kline.header = EnumAttribute<Link::Header>(node, kFunction["Header"]);
  kline.functional = FlagAttribute(node, kFunction["Functional"]);
  kline.init_address =
      ByteAttribute(node, kFunction["InitAddress"], kline.functional ? kFunctionalAddress : address);
  kline.baud = IntegerAttribute(node, kFunction["Baud"]);
  kline.session_baud = OptionalByte(node, kFunction["SessionBaud"]);
  return kline;
}

Timing ReadTiming(const pugi::xml_node& node) {
  Timing timing;
  for (const TimingParameter& parameter : kTimingParameters) {
    timing.*parameter.value = OptionalInteger(node, grammar::Of(parameter));
  }
  return timing;
}

TransportDescription ReadTransport(const pugi::xml_node& node) {
  TransportDescription description;
  description.request_id = CanIdentifierAttribute(node, kFunction["RequestId"]);
  description.response_id = CanIdentifierAttribute(node, kFunction["ResponseId"]);
  ReadAddressing(node, description);
  description.padding = ReadPadding(node);
  for (const TransportParameter& parameter : kTransportParameters) {
    description.*parameter.value = OptionalInteger(node, grammar::Of(parameter));
  }
  return description;
}

}  // namespace korval::ecu
