// SPDX-License-Identifier: MIT
#include "apps/check/FunctionCheck.h"

#include <string_view>

#include "apps/check/ElementCheck.h"
#include "ecu/description/Timing.h"
#include "ecu/description/TransportDescription.h"

namespace korval::apps {
namespace {

constexpr std::uint32_t kLastByte = 0xFF;

void CheckCombinations(CheckedFile& file, const pugi::xml_node& function) {
  if (function.attribute("SessionBaud") && !function.attribute("Session")) {
    file.Report(function, "SessionBaud goes behind the session that Session opens, and there is none.");
  }
  if (function.attribute("LLine") && function.attribute("Rts")) {
    file.Report(function, "RTS drives the L line (LLine), so Rts has no effect; take it out.");
  }
}

void CheckFunction(CheckedFile& file, const pugi::xml_node& function) {
  ElementCheck check(file, function);
  check.OneOf("Protocol", {"KWP2000", "DiagOnCAN", "CAN"});
  check.OneOf("Init", {"fast", "slow", "none"});
  check.OneOf("Echo", {"auto", "on", "off"});
  check.OneOf("Rts", {"on", "off", "as is"});
  check.OneOf("Dtr", {"on", "off", "as is"});
  check.OneOf("LLine", {"none", "rts", "rts-inverted"});
  check.OneOf("WakeUp", {"auto", "break", "byte"});
  check.OneOf("Header", {"auto", "format", "format-length", "addresses", "addresses-length"});
  check.OneOf("Functional", {"0", "1"});
  for (const char* address : {"Address", "Tester", "InitAddress", "Session", "SessionBaud"})
    check.Hex(address, kLastByte);
  check.Integer("Baud", 1, 4000000);
  check.Integer("KeepAliveMs", 0, 3600000);
  check.Integer("Repeats", 0, 10);
  for (const ecu::TimingParameter& parameter : ecu::kTimingParameters) {
    check.Integer(parameter.attribute, parameter.lowest, parameter.highest);
  }
  CheckCombinations(file, function);
  CheckTransport(file, function);
}

}  // namespace

void CheckTransport(CheckedFile& file, const pugi::xml_node& element) {
  ElementCheck check(file, element);
  const auto request = check.Identifier("RequestId");
  const auto response = check.Identifier("ResponseId");
  if (request && request == response) {
    file.Report(element, "RequestId and ResponseId are the same; the ECU answers on another identifier.");
  }
  check.OneOf("Addressing", {"normal", "extended"});
  if (std::string_view(element.attribute("Padding").value()) != "none") check.Hex("Padding", kLastByte);
  for (const ecu::TransportParameter& parameter : ecu::kTransportParameters) {
    check.Integer(parameter.attribute, parameter.lowest, parameter.highest);
  }
}

pugi::xml_node CheckFunctions(CheckedFile& file, const pugi::xml_node& root) {
  pugi::xml_node serving;
  for (const pugi::xml_node& target : root.children("qor:Target")) {
    for (const pugi::xml_node& function : target.children("Function")) {
      if (!ElementCheck(file, function).Required("Name", "the function cannot be found without it")) continue;
      if (serving) {
        file.Report(function, "the function " + std::string(serving.attribute("Name").value()) +
                                  " stands before it and serves; a file describes one function.");
        continue;
      }
      serving = function;
      CheckFunction(file, function);
    }
  }
  if (!serving) {
    file.Report(root, "the file names no function; write <Function Name=\"...\"/> into qor:Target.");
  }
  return serving;
}

}  // namespace korval::apps
