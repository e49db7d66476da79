// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include <pugixml.hpp>

#include "ecu/description/FunctionDescription.h"

namespace korval::ecu {

/// These read attributes of a Function element. What cannot be used counts as absent.
FunctionDescription ReadFunction(const pugi::xml_node& node);
/// `address` is the ECU's.
KLineDescription ReadKLine(const pugi::xml_node& node, std::uint8_t address);
Timing ReadTiming(const pugi::xml_node& node);
/// Of a Diagnostic element of a CAN messaging file as well.
TransportDescription ReadTransport(const pugi::xml_node& node);

}  // namespace korval::ecu
