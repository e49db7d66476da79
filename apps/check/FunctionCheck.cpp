// SPDX-License-Identifier: MIT
#include "apps/check/FunctionCheck.h"

#include <algorithm>
#include <string_view>

#include "apps/check/ElementCheck.h"
#include "ecu/ecufile/Grammar.h"

namespace korval::apps {
namespace {

using ecu::grammar::kFunction;

// Those of a Diagnostic element, too, which are checked by themselves.
bool IsOfTransport(const ecu::Attribute& rule) {
  const auto others = ecu::grammar::kDiagnostic.attributes;
  return std::any_of(others.begin(), others.end(),
                     [&](const ecu::Attribute& other) { return std::string_view(other.name) == rule.name; });
}

void CheckCombinations(CheckedFile& file, const pugi::xml_node& function) {
  if (function.attribute("SessionBaud") && !function.attribute("Session")) {
    file.Report(function, "SessionBaud goes behind the session that Session opens, and there is none.");
  }
  if (function.attribute("LLine") && function.attribute("Rts")) {
    file.Report(function, "RTS drives the L line (LLine), so Rts has no effect; take it out.");
  }
}

void CheckFunction(CheckedFile& file, const pugi::xml_node& function) {
  using Kind = ecu::Attribute::Kind;
  ElementCheck check(file, function);
  for (const Kind kind : {Kind::kChoice, Kind::kHex, Kind::kInteger}) {
    for (const ecu::Attribute& rule : kFunction.attributes) {
      if (rule.kind == kind && !IsOfTransport(rule)) check.Value(rule);
    }
  }
  CheckCombinations(file, function);
  CheckTransport(file, function);
}

}  // namespace

void CheckTransport(CheckedFile& file, const pugi::xml_node& element) {
  ElementCheck check(file, element);
  const auto request = check.Identifier(kFunction["RequestId"]);
  const auto response = check.Identifier(kFunction["ResponseId"]);
  if (request && request == response) {
    file.Report(element, "RequestId and ResponseId are the same; the ECU answers on another identifier.");
  }
  check.Value(kFunction["Addressing"]);
  check.Value(kFunction["Padding"]);
  for (const ecu::TransportParameter& parameter : ecu::kTransportParameters) {
    check.Value(ecu::grammar::Of(parameter));
  }
}

pugi::xml_node CheckFunctions(CheckedFile& file, const pugi::xml_node& root) {
  pugi::xml_node serving;
  for (const pugi::xml_node& target : root.children("qor:Target")) {
    for (const pugi::xml_node& function : target.children("Function")) {
      if (!ElementCheck(file, function)
               .Required(kFunction["Name"], "the function cannot be found without it"))
        continue;
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
