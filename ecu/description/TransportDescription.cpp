// SPDX-License-Identifier: MIT
#include "ecu/description/TransportDescription.h"

#include <algorithm>

namespace korval::ecu {
namespace {

template <typename Value>
void Complete(std::optional<Value>& value, const std::optional<Value>& other) {
  if (!value) value = other;
}

}  // namespace

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
