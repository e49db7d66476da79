// SPDX-License-Identifier: MIT
#include "ecu/description/MessagingFile.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <utility>

#include "base/Failure.h"
#include "base/FileContent.h"
#include "base/XmlFile.h"
#include "ecu/can/DbcFile.h"
#include "ecu/description/AttributeReader.h"

namespace korval::ecu {
namespace {

void ReadDiagnostic(const pugi::xml_node& node, MessagingFile& file) {
  MessagingFile::Diagnostic diagnostic{node.attribute("Function").value(), TransportDescription::Read(node)};
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
  const auto identifier = CanIdentifierAttribute(node, "Id");
  MessagingFile::Frame frame;
  frame.name = node.attribute("Name").value();
  if (!identifier || frame.name.empty()) return;
  frame.identifier = *identifier;
  frame.cycle = MillisecondsAttribute(node, "CycleMs", frame.cycle, 0, 3600000);
  frame.items = ReadDataItems(node);
  for (const ItemDescription& item : frame.items) RequireInside(frame, item);
  file.frames.push_back(std::move(frame));
}

constexpr std::uintmax_t kLongestDbc = 32 << 20;

bool IsDbc(const std::string& path) {
  const std::string extension = std::filesystem::path(path).extension().string();
  return extension == ".dbc" || extension == ".DBC";
}

ItemDescription ItemOf(const DbcFile::Signal& signal) {
  ItemDescription item;
  item.name = signal.name;
  item.first_bit = signal.intel ? signal.start_bit : signal.MotorolaFirstBit();
  item.bits = signal.bits;
  item.little_endian = signal.intel;
  item.coding = signal.is_signed ? Coding::kSigned : Coding::kUnsigned;
  if (signal.number != DbcFile::Number::kInteger) item.coding = Coding::kFloat;
  item.scaled = signal.factor != 1 || signal.offset != 0;
  item.SetStep(signal.factor);
  item.offset = signal.offset;
  item.unit = signal.unit;
  for (const DbcFile::Text& text : signal.texts) item.texts.push_back({text.raw, text.text});
  return item;
}

MessagingFile::Frame FrameOf(const DbcFile::Message& message, std::string name) {
  MessagingFile::Frame frame;
  frame.name = std::move(name);
  frame.identifier = message.identifier;
  frame.cycle = Milliseconds(message.cycle_ms);
  return frame;
}

// The frame with the signals that it always has, then one for each value of its multiplexor.
void AddFrames(const DbcFile::Message& message, MessagingFile& file) {
  MessagingFile::Frame always = FrameOf(message, message.name);
  std::map<std::int64_t, MessagingFile::Frame> multiplexed;
  std::optional<ItemDescription> multiplexor;
  for (const DbcFile::Signal& signal : message.signals) {
    if (signal.is_multiplexor) multiplexor = ItemOf(signal);
    if (!signal.multiplexed_at) {
      always.items.push_back(ItemOf(signal));
      continue;
    }
    const std::string name = message.name + " m" + std::to_string(*signal.multiplexed_at);
    MessagingFile::Frame& frame =
        multiplexed.try_emplace(*signal.multiplexed_at, FrameOf(message, name)).first->second;
    frame.items.push_back(ItemOf(signal));
  }
  file.frames.push_back(std::move(always));
  for (auto& [value, frame] : multiplexed) {
    frame.multiplexor = MessagingFile::Frame::Multiplexor{*multiplexor, value};
    file.frames.push_back(std::move(frame));
  }
}

}  // namespace

TransportDescription MessagingFile::TransportOf(const std::string& function) const {
  const auto found = std::find_if(diagnostics.begin(), diagnostics.end(), [&](const Diagnostic& diagnostic) {
    return diagnostic.function == function;
  });
  return found == diagnostics.end() ? TransportDescription() : found->transport;
}

MessagingFile MessagingFile::FromDbc(std::string_view content) {
  DbcFile dbc = DbcFile::Read(content);
  MessagingFile file;
  for (const DbcFile::Message& message : dbc.messages) AddFrames(message, file);
  file.notes = std::move(dbc.notes);
  return file;
}

MessagingFile MessagingFile::FromXml(const pugi::xml_node& messaging) {
  MessagingFile file;
  file.bitrate = IntegerAttribute(messaging, "Bitrate", file.bitrate, 1000, 1000000);
  for (const pugi::xml_node& node : messaging.children("Diagnostic")) ReadDiagnostic(node, file);
  for (const pugi::xml_node& node : messaging.children("Frame")) ReadFrame(node, file);
  return file;
}

MessagingFile LoadMessagingFile(const std::string& path) {
  if (IsDbc(path)) {
    MessagingFile file = MessagingFile::FromDbc(base::ReadFile(path, kLongestDbc));
    if (file.frames.empty()) throw base::Failure("CAN messaging file " + path + " has no message (BO_)");
    return file;
  }
  const base::XmlDocument document = base::LoadXmlFile(path);
  const pugi::xml_node messaging = document->child("xml").child("messaging");
  if (!messaging) throw base::Failure("CAN messaging file " + path + " has no element xml/messaging");
  try {
    return MessagingFile::FromXml(messaging);
  } catch (const base::Failure& failure) {
    throw base::Failure("CAN messaging file " + path + ": " + failure.Description());
  }
}

}  // namespace korval::ecu
