// SPDX-License-Identifier: MIT
#include "ecu/ecufile/EcuFile.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "ecu/ecufile/AttributeReader.h"
#include "ecu/ecufile/FunctionReader.h"
#include "ecu/ecufile/Grammar.h"
#include "ecu/ecufile/ItemReader.h"
#include "ecu/ecufile/SimulationReader.h"

namespace korval::ecu {
namespace {

using grammar::kFunction;
using grammar::kReceived;
using grammar::kRequest;
using grammar::kSent;
using grammar::kTarget;
using grammar::kXml;

// Calls `read` with each element at xml/qor:Target/<group>/<element>, in the order of the file.
template <typename Read>
void ForEach(const pugi::xml_document& document, const Element& group, const Element& element, Read read) {
  for (const pugi::xml_node& target : document.child(kXml.name).children(kTarget.name)) {
    for (const pugi::xml_node& holder : target.children(group.name)) {
      for (const pugi::xml_node& node : holder.children(element.name)) read(node);
    }
  }
}

pugi::xml_node FunctionNode(const pugi::xml_document& document) {
  for (const pugi::xml_node& target : document.child(kXml.name).children(kTarget.name)) {
    for (const pugi::xml_node& function : target.children(kFunction.name)) {
      if (function.attribute(kFunction["Name"].name)) return function;
    }
  }
  return {};
}

// None when the element has no name.
std::optional<RequestDescription> ReadRequest(const base::XmlDocument& document, const pugi::xml_node& node) {
  RequestDescription request;
  request.name = TextAttribute(node, kRequest["Name"]);
  if (request.name.empty()) return std::nullopt;
  request.no_answer = FlagAttribute(node, kRequest["NoAnswer"]);
  const pugi::xml_node sent = node.child(kSent.name);
  auto bytes = BytesAttribute(sent, kSent["Bytes"]);
  if (bytes && HasLength(kSent["Bytes"], bytes->Length())) {
    request.sent = *std::move(bytes);
    request.sent_items = ReadDataItems(sent);
    request.CompleteSent();
  }
  const pugi::xml_node received = node.child(kReceived.name);
  request.min_bytes = static_cast<std::size_t>(IntegerAttribute(received, kReceived["MinBytes"]));
  request.received =
      Lazy<RequestDescription::Items>([document, received] { return ReadDataItems(received); });
  return request;
}

std::vector<RequestDescription> ReadRequests(const base::XmlDocument& document) {
  std::vector<RequestDescription> requests;
  ForEach(*document, grammar::kRequests, kRequest, [&](const pugi::xml_node& node) {
    if (auto request = ReadRequest(document, node)) requests.push_back(*std::move(request));
  });
  return requests;
}

std::vector<std::string> ReadReferenceData(const pugi::xml_document& document) {
  std::vector<std::string> names;
  ForEach(document, grammar::kReferenceData, grammar::kFact, [&](const pugi::xml_node& node) {
    names.emplace_back(TextAttribute(node, grammar::kFact["Name"]));
  });
  return names;
}

std::optional<SimulationDescription> ReadSimulationOf(const pugi::xml_document& document) {
  const pugi::xml_node node = document.child(kXml.name).child(grammar::kSimulation.name);
  if (!node) return std::nullopt;
  return ReadSimulation(node);
}

}  // namespace

std::shared_ptr<const EcuDescription> ReadEcuFile(const base::XmlDocument& document) {
  const pugi::xml_node function = FunctionNode(*document);
  if (!function) {
    throw base::Failure(kNoEcuFile, "The file names no function (xml/qor:Target/Function, attribute Name)");
  }
  EcuDescription::Parts parts;
  parts.function = ReadFunction(function);
  parts.requests = Lazy<std::vector<RequestDescription>>([document] { return ReadRequests(document); });
  parts.reference_data = Lazy<std::vector<std::string>>([document] { return ReadReferenceData(*document); });
  parts.simulation =
      Lazy<std::optional<SimulationDescription>>([document] { return ReadSimulationOf(*document); });
  return std::make_shared<const EcuDescription>(std::move(parts));
}

}  // namespace korval::ecu
