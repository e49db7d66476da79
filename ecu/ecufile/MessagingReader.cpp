// SPDX-License-Identifier: MIT
#include "ecu/ecufile/MessagingReader.h"

#include <cstdint>
#include <filesystem>
#include <utility>

#include "base/Failure.h"
#include "base/FileContent.h"
#include "base/XmlFile.h"
#include "ecu/dbc/DbcMessaging.h"
#include "ecu/ecufile/AttributeReader.h"
#include "ecu/ecufile/FunctionReader.h"
#include "ecu/ecufile/Grammar.h"
#include "ecu/ecufile/ItemReader.h"

namespace korval::ecu {
namespace {

using grammar::kFrame;

void ReadDiagnostic(const pugi::xml_node& node, MessagingFile& file) {
  MessagingFile::Diagnostic diagnostic{TextAttribute(node, grammar::kDiagnostic["Function"]),
                                       ReadTransport(node)};
  if (!diagnostic.transport.request_id || !diagnostic.transport.response_id) return;
  file.diagnostics.push_back(std::move(diagnostic));
}

void RequireInside(const MessagingFile::Frame& frame, const ItemDescription& item) {
  const std::size_t needed = item.BytesNeeded();
  if (needed <= CanFrame::kMostBytes) return;
  throw base::Failure("frame " + frame.name + ": the data item " + item.name + " needs " +
                      std::to_string(needed) + " bytes, but a CAN frame has " +
                      std::to_string(CanFrame::kMostBytes) +
                      "; correct its FirstByte, BitOffset or BitsCount");
}

void ReadFrame(const pugi::xml_node& node, MessagingFile& file) {
  const auto identifier = CanIdentifierAttribute(node, kFrame["Id"]);
  MessagingFile::Frame frame;
  frame.name = TextAttribute(node, kFrame["Name"]);
  if (!identifier || frame.name.empty()) return;
  frame.identifier = *identifier;
  frame.cycle = MillisecondsAttribute(node, kFrame["CycleMs"]);
  frame.items = ReadDataItems(node);
  for (const ItemDescription& item : frame.items) RequireInside(frame, item);
  file.frames.push_back(std::move(frame));
}

constexpr std::uintmax_t kLongestDbc = 32 << 20;

bool IsDbc(const std::string& path) {
  const std::string extension = std::filesystem::path(path).extension().string();
  return extension == ".dbc" || extension == ".DBC";
}

MessagingFile ReadMessaging(const pugi::xml_node& messaging) {
  MessagingFile file;
  file.bitrate = IntegerAttribute(messaging, grammar::kMessaging["Bitrate"]);
  for (const pugi::xml_node& node : messaging.children(grammar::kDiagnostic.name)) ReadDiagnostic(node, file);
  for (const pugi::xml_node& node : messaging.children(kFrame.name)) ReadFrame(node, file);
  return file;
}

}  // namespace

MessagingFile LoadMessagingFile(const std::string& path) {
  if (IsDbc(path)) {
    MessagingFile file = ReadDbc(base::ReadFile(path, kLongestDbc));
    if (file.frames.empty()) throw base::Failure("CAN messaging file " + path + " has no message (BO_)");
    return file;
  }
  const base::XmlDocument document = base::LoadXmlFile(path);
  const pugi::xml_node messaging = document->child(grammar::kXml.name).child(grammar::kMessaging.name);
  if (!messaging) throw base::Failure("CAN messaging file " + path + " has no element xml/messaging");
  try {
    return ReadMessaging(messaging);
  } catch (const base::Failure& failure) {
    throw base::Failure("CAN messaging file " + path + ": " + failure.Description());
  }
}

}  // namespace korval::ecu
