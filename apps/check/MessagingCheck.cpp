// SPDX-License-Identifier: MIT
#include "apps/check/MessagingCheck.h"

#include <charconv>
#include <string_view>

#include "apps/check/ElementCheck.h"
#include "apps/check/FunctionCheck.h"
#include "apps/check/ItemCheck.h"
#include "ecu/dbc/DbcFile.h"
#include "ecu/ecufile/AttributeReader.h"
#include "ecu/ecufile/Grammar.h"

namespace korval::apps {
namespace {

namespace grammar = ecu::grammar;
using grammar::kDiagnostic;
using grammar::kFrame;

constexpr char kNoDiagnostic[] = "the function's diagnosis cannot be found";
constexpr char kNoFrame[] = "the frame is left out";

// A note of the reader begins with "Line 12: " where it knows the line.
Finding FindingOf(const std::string& note) {
  static constexpr std::string_view kLine = "Line ";
  Finding finding{1, note};
  if (!note.starts_with(kLine)) return finding;
  const char* const end = note.data() + note.size();
  const auto [behind, error] = std::from_chars(note.data() + kLine.size(), end, finding.line);
  if (error != std::errc{} || end - behind < 2) return {1, note};
  finding.sentence.assign(behind + 2, end);
  return finding;
}

}  // namespace

void MessagingCheck::Run(const pugi::xml_node& root) {
  const pugi::xml_node messaging = root.child("messaging");
  ElementCheck(file_, messaging).Value(grammar::kMessaging["Bitrate"]);
  for (const pugi::xml_node& diagnostic : messaging.children("Diagnostic")) CheckDiagnostic(diagnostic);
  for (const pugi::xml_node& frame : messaging.children("Frame")) CheckFrame(frame);
  const pugi::xml_node second = messaging.next_sibling("messaging");
  if (second) file_.Report(second, "there is one already; only the first one is used.");
}

void MessagingCheck::CheckDiagnostic(const pugi::xml_node& diagnostic) {
  ElementCheck check(file_, diagnostic);
  const std::string function = diagnostic.attribute("Function").value();
  if (check.Required(kDiagnostic["Function"], kNoDiagnostic) && !functions_.insert(function).second) {
    file_.Report(diagnostic, "the function stands here already; the first one serves.");
  }
  CheckTransport(file_, diagnostic);
  for (const ecu::Attribute* rule : {&kDiagnostic["RequestId"], &kDiagnostic["ResponseId"]}) {
    check.Required(*rule, kNoDiagnostic);
    const auto identifier = ecu::CanIdentifierAttribute(diagnostic, *rule);
    if (identifier) users_.try_emplace(*identifier, function);
  }
}

void MessagingCheck::CheckFrame(const pugi::xml_node& frame) {
  ElementCheck check(file_, frame);
  check.Required(kFrame["Name"], kNoFrame);
  check.Required(kFrame["Id"], kNoFrame);
  check.Value(kFrame["CycleMs"]);
  const std::string name = frame.attribute("Name").value();
  if (!name.empty() && !frames_.insert(name).second) {
    file_.Report(frame, "there is a frame of this name already; by name, only the first is reached.");
  }
  if (const auto identifier = check.Identifier(kFrame["Id"])) TakeIdentifier(frame, *identifier);
  const std::vector<PlacedItem> items = CheckItems(file_, frame);
  CheckInside(file_, items, ecu::CanFrame::kMostBytes, "a CAN frame");
  NoteLostDigits(file_, items);
}

void MessagingCheck::TakeIdentifier(const pugi::xml_node& element, ecu::CanIdentifier identifier) {
  const auto [user, is_new] = users_.try_emplace(identifier, element.attribute("Name").value());
  if (!is_new) file_.Report(element, user->second + " uses the same identifier; one of them is wrong.");
}

void CheckDbc(CheckedFile& file) {
  const ecu::DbcFile dbc = ecu::DbcFile::Read(file.Bytes());
  for (const std::string& note : dbc.notes) {
    Finding finding = FindingOf(note);
    file.ReportLine(finding.line, std::move(finding.sentence));
  }
  if (dbc.messages.empty()) file.ReportLine(1, "The file has no message (BO_) that can be used.");
}

}  // namespace korval::apps
