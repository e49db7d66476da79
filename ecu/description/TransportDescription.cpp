// SPDX-License-Identifier: MIT
#include "ecu/description/TransportDescription.h"

#include <algorithm>
#include <string_view>

#include "base/NumberText.h"
#include "ecu/description/AttributeReader.h"

namespace korval::ecu {
namespace {

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

TransportDescription::Number ReadNumber(const pugi::xml_node& node, const TransportParameter& parameter) {
  const auto value = base::ReadInteger(node.attribute(parameter.attribute).value());
  if (!value || *value < parameter.lowest || *value > parameter.highest) return std::nullopt;
  return value;
}

template <typename Value>
void Complete(std::optional<Value>& value, const std::optional<Value>& other) {
  if (!value) value = other;
}

}  // namespace

TransportDescription TransportDescription::Read(const pugi::xml_node& node) {
  TransportDescription description;
  description.request_id = CanIdentifierAttribute(node, "RequestId");
  description.response_id = CanIdentifierAttribute(node, "ResponseId");
  ReadAddressing(node, description);
  description.padding = ReadPadding(node);
  for (const TransportParameter& parameter : kTransportParameters) {
    description.*parameter.value = ReadNumber(node, parameter);
  }
  return description;
}

TransportDescription TransportDescription::CompletedBy(const TransportDescription& other) const {
  TransportDescription completed = *this;
  Complete(completed.request_id, other.request_id);
  Complete(completed.response_id, other.response_id);
  if (!extended_addressing && unknown_addressing.empty()) {
    completed.extended_addressing = other.extended_addressing;
    completed.unknown_addressing = other.unknown_addressing;
  }
  Complete(completed.padding, other.padding);
  for (const TransportParameter& parameter : kTransportParameters) {
    Complete(completed.*parameter.value, other.*parameter.value);
  }
  if (st_min_ms || st_min_us) completed.st_min_us = st_min_us;  // two ways to say one thing
  return completed;
}

std::int32_t TransportDescription::Value(Number TransportDescription::*number) const {
  if (this->*number) return *(this->*number);
  const auto parameter =
      std::find_if(kTransportParameters.begin(), kTransportParameters.end(),
                   [number](const TransportParameter& entry) { return entry.value == number; });
  return parameter == kTransportParameters.end() ? 0 : parameter->fallback.value_or(0);
}

}  // namespace korval::ecu
