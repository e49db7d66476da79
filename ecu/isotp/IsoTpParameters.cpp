// SPDX-License-Identifier: MIT
#include "ecu/isotp/IsoTpParameters.h"

#include <utility>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"

namespace korval::ecu {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

microseconds SeparationAsked(const TransportDescription& transport) {
  if (transport.st_min_us) return microseconds(*transport.st_min_us);
  return milliseconds(transport.Value(&TransportDescription::st_min_ms));
}

void SetFormat(const FunctionDescription& function, const TransportDescription& transport,
               IsoTpParameters& parameters) {
  if (transport.extended_addressing.value_or(false)) {
    parameters.transmit_target = function.address;
    parameters.receive_target = function.tester;
  }
  if (transport.padding == TransportDescription::kNoPadding) {
    parameters.padding.reset();
  } else if (transport.padding) {
    parameters.padding = static_cast<std::uint8_t>(*transport.padding);
  }
  parameters.longest_message =
      static_cast<std::size_t>(transport.Value(&TransportDescription::longest_message));
}

void SetTiming(const TransportDescription& transport, IsoTpParameters& parameters) {
  using Description = TransportDescription;
  parameters.n_as = milliseconds(transport.Value(&Description::n_as_ms));
  parameters.n_ar = milliseconds(transport.Value(&Description::n_ar_ms));
  parameters.n_bs = milliseconds(transport.Value(&Description::n_bs_ms));
  parameters.n_br = milliseconds(transport.Value(&Description::n_br_ms));
  parameters.n_cr = milliseconds(transport.Value(&Description::n_cr_ms));
  if (transport.n_cs_us) parameters.separation = microseconds(*transport.n_cs_us);
  parameters.st_min = SeparationAsked(transport);
  parameters.block_size = static_cast<std::uint8_t>(transport.Value(&Description::block_size));
  parameters.most_waits = transport.Value(&Description::most_waits);
}

}  // namespace

std::optional<IsoTpParameters> IsoTpParameters::OfTester(const FunctionDescription& function,
                                                         const TransportDescription& transport) {
  if (!transport.unknown_addressing.empty()) {
    throw base::Failure(kInterfaceRefused, "the Addressing '" + transport.unknown_addressing + "' of " +
                                               function.name + " is not understood; normal and extended are");
  }
  if (!transport.request_id || !transport.response_id) return std::nullopt;
  IsoTpParameters parameters;
  parameters.transmit = *transport.request_id;
  parameters.receive = *transport.response_id;
  SetFormat(function, transport, parameters);
  SetTiming(transport, parameters);
  return parameters;
}

IsoTpParameters IsoTpParameters::OfOtherSide() const {
  IsoTpParameters other = *this;
  std::swap(other.transmit, other.receive);
  std::swap(other.transmit_target, other.receive_target);
  return other;
}

}  // namespace korval::ecu
