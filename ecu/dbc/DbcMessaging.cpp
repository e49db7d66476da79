// SPDX-License-Identifier: MIT
#include "ecu/dbc/DbcMessaging.h"

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "ecu/dbc/DbcFile.h"

namespace korval::ecu {
namespace {

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

MessagingFile ReadDbc(std::string_view content) {
  DbcFile dbc = DbcFile::Read(content);
  MessagingFile file;
  for (const DbcFile::Message& message : dbc.messages) AddFrames(message, file);
  file.notes = std::move(dbc.notes);
  return file;
}

}  // namespace korval::ecu
