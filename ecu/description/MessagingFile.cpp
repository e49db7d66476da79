// SPDX-License-Identifier: MIT
#include "ecu/description/MessagingFile.h"

#include <filesystem>
#include <string_view>

#include "base/Failure.h"
#include "ecu/description/AttributeReader.h"

namespace korval::ecu {
namespace {

bool IsExtended(const pugi::xml_node& node, const char* name) {
  return std::string_view(node.attribute(name).value()).size() == 8;
}

void ReadDiagnostic(const pugi::xml_node& node, MessagingFile& file) {
  const auto request_id = HexAttribute(node, "RequestId");
  const auto response_id = HexAttribute(node, "ResponseId");
  if (!request_id || !response_id) return;
  MessagingFile::Diagnostic diagnostic;
  diagnostic.function = node.attribute("Function").value();
  diagnostic.request_id = *request_id;
  diagnostic.response_id = *response_id;
  diagnostic.extended_ids = IsExtended(node, "RequestId");
  diagnostic.timing.st_min = MillisecondsAttribute(node, "StMinMs", diagnostic.timing.st_min, 0, 127);
  diagnostic.timing.block_size = IntegerAttribute(node, "BlockSize", 0, 0, 255);
  diagnostic.padding = static_cast<std::uint8_t>(HexAttribute(node, "Padding").value_or(0x55));
  file.diagnostics.push_back(std::move(diagnostic));
}

void ReadFrame(const pugi::xml_node& node, MessagingFile& file) {
  const auto identifier = HexAttribute(node, "Id");
  MessagingFile::Frame frame;
  frame.name = node.attribute("Name").value();
  if (!identifier || frame.name.empty()) return;
  frame.identifier = *identifier;
  frame.extended_id = IsExtended(node, "Id");
  frame.cycle = MillisecondsAttribute(node, "CycleMs", frame.cycle, 0, 3600000);
  frame.items = ReadDataItems(node);
  file.frames.push_back(std::move(frame));
}

}  // namespace

MessagingFile LoadMessagingFile(const std::string& path) {
  if (std::filesystem::path(path).extension() == ".dbc") {
    throw base::Failure("CAN messaging file " + path +
                        ": DBC files cannot be read yet, give an XML messaging file");
  }
  const base::XmlDocument document = base::LoadXmlFile(path);
  const pugi::xml_node messaging = document->child("xml").child("messaging");
  if (!messaging) throw base::Failure("CAN messaging file " + path + " has no element xml/messaging");
  MessagingFile file;
  file.bitrate = IntegerAttribute(messaging, "Bitrate", file.bitrate, 1000, 1000000);
  for (const pugi::xml_node& node : messaging.children("Diagnostic")) ReadDiagnostic(node, file);
  for (const pugi::xml_node& node : messaging.children("Frame")) ReadFrame(node, file);
  return file;
}

}  // namespace korval::ecu
