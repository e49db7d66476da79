// SPDX-License-Identifier: MIT
#include "ecu/description/KLineDescription.h"

#include <string_view>

#include "ecu/description/AttributeReader.h"

namespace korval::ecu {
namespace {

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

}  // namespace

KLineDescription KLineDescription::Read(const pugi::xml_node& node) {
  KLineDescription kline;
  kline.echo = EchoOf(node.attribute("Echo").value());
  kline.rts = ModemLineOf(node.attribute("Rts").value());
  kline.dtr = ModemLineOf(node.attribute("Dtr").value());
  kline.l_line = LLineOf(node.attribute("LLine").value());
  kline.wake_up = WakeUpOf(node.attribute("WakeUp").value());
  kline.header = HeaderOf(node.attribute("Header").value());
  kline.functional = FlagAttribute(node, "Functional");
  const auto speed = HexAttribute(node, "SessionBaud");
  if (speed && *speed >= 1 && *speed <= 0xFF) kline.session_baud = static_cast<std::uint8_t>(*speed);
  return kline;
}

}  // namespace korval::ecu
