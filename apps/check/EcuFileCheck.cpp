// SPDX-License-Identifier: MIT
#include "apps/check/EcuFileCheck.h"

#include <algorithm>
#include <string_view>

#include "apps/check/ElementCheck.h"
#include "apps/check/FunctionCheck.h"
#include "apps/check/SimulationCheck.h"
#include "ecu/ecufile/AttributeReader.h"
#include "ecu/ecufile/Grammar.h"

namespace korval::apps {

namespace grammar = ecu::grammar;

void EcuFileCheck::Run(const pugi::xml_node& root) {
  const pugi::xml_node function = CheckFunctions(file_, root);
  const std::string_view protocol = function.attribute("Protocol").value();
  frames_only_ = protocol == "CAN";
  names_.has_frames = frames_only_ || protocol == "DiagOnCAN";
  for (const pugi::xml_node& target : root.children("qor:Target")) {
    CheckReferenceData(target);
    for (const pugi::xml_node& requests : target.children("Requests")) {
      for (const pugi::xml_node& request : requests.children("Request")) CheckRequest(request);
    }
  }
  CheckSimulation(file_, root, names_);
}

void EcuFileCheck::CheckReferenceData(const pugi::xml_node& target) {
  for (const pugi::xml_node& data : target.children("ReferenceData")) {
    for (const pugi::xml_node& item : data.children("Item")) {
      ElementCheck(file_, item).Required(grammar::kFact["Name"], "it is listed with an empty name");
    }
  }
}

void EcuFileCheck::CheckRequest(const pugi::xml_node& request) {
  const std::string name = request.attribute("Name").value();
  if (!ElementCheck(file_, request).Required(grammar::kRequest["Name"], "the request is left out")) return;
  if (!names_.requests.insert(name).second) {
    file_.Report(request, "there is a request of this name already; the first one serves.");
  }
  ElementCheck(file_, request).Value(grammar::kRequest["NoAnswer"]);
  CheckSingle(request, "Sent");
  CheckSingle(request, "Received");
  CheckSent(request);
  CheckReceived(request);
}

void EcuFileCheck::CheckSingle(const pugi::xml_node& request, const char* child) {
  const pugi::xml_node second = request.child(child).next_sibling(child);
  if (second) file_.Report(second, "its request has one already; only the first one is used.");
}

void EcuFileCheck::CheckSent(const pugi::xml_node& request) {
  const pugi::xml_node sent = request.child("Sent");
  const std::vector<PlacedItem> items = TakeItems(sent);
  CheckOverlaps(file_, items);
  const auto bytes = ElementCheck(file_, sent).Bytes(grammar::kSent["Bytes"]);
  if (!bytes || bytes->Empty()) {
    const bool wrong = sent.attribute("Bytes") && !bytes;  // has been reported
    if (!wrong && !frames_only_) {
      file_.Report(request, "the attribute Bytes of Sent is missing; the request cannot be executed.");
    }
    return;
  }
  if (bytes->Length() > ecu::kLongestMessage) {
    file_.Report(sent, "Bytes is longer than " + std::to_string(ecu::kLongestMessage) +
                           " bytes; the request cannot be executed.");
    return;
  }
  CheckInside(file_, items, bytes->Length(), "Bytes");
}

void EcuFileCheck::CheckReceived(const pugi::xml_node& request) {
  const pugi::xml_node received = request.child("Received");
  const std::vector<PlacedItem> items = TakeItems(received);
  for (const PlacedItem& placed : items) ElementCheck(file_, placed.element).Value(grammar::kItem["Ref"]);
  NoteLostDigits(file_, items);
  const ecu::Attribute& min_bytes = grammar::kReceived["MinBytes"];
  if (!ElementCheck(file_, received).Value(min_bytes)) return;
  if (received.attribute(min_bytes.name)) {
    const auto length = static_cast<std::size_t>(ecu::IntegerAttribute(received, min_bytes));
    CheckInside(file_, items, length, "the shortest answer (MinBytes)");
  } else if (!items.empty()) {
    file_.Report(received,
                 "the attribute MinBytes is missing; an answer too short for its items is not noticed.");
  }
}

std::vector<PlacedItem> EcuFileCheck::TakeItems(const pugi::xml_node& holder) {
  std::vector<PlacedItem> items = CheckItems(file_, holder);
  for (const pugi::xml_node& element : holder.children("DataItem")) {
    names_.items.try_emplace(element.attribute("Name").value());
  }
  for (const PlacedItem& placed : items) names_.items[placed.item.name].push_back(placed.item);
  return items;
}

}  // namespace korval::apps
