// SPDX-License-Identifier: MIT
// Any data item over any message: decoding is total, and what was decoded is encoded as the bits it came
// from. The item is 8 bytes (first byte, bit offset, bits as a word, coding, byte order, step, offset), the
// rest is the message.
#include <array>
#include <bit>
#include <cmath>
#include <string>

#include <pugixml.hpp>

#include "base/Failure.h"
#include "ecu/description/ItemCoding.h"
#include "ecu/description/ItemEncoding.h"
#include "ecu/description/ItemPlan.h"
#include "ecu/ecufile/ItemReader.h"
#include "fuzz/Input.h"
#include "fuzz/Require.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file

constexpr std::array<const char*, 8> kCodings{"unsigned", "signed", "float", "boolean",
                                              "ascii",    "bytes",  "bcd",   ""};
constexpr std::array<const char*, 6> kFactors{"", "1", "0.25", "-40", "1E300", "1E-300"};
// Up to so many bits a double holds every number.
constexpr std::size_t kExactBits = 53;

std::optional<ecu::ItemDescription> ReadItem(fuzz::Input& input) {
  pugi::xml_document document;
  pugi::xml_node node = document.append_child("DataItem");
  const auto set = [&node](const char* name, const std::string& value) {
    if (!value.empty()) node.append_attribute(name) = value.c_str();
  };
  set("Name", "I");
  set("FirstByte", std::to_string(input.Byte()));
  set("BitOffset", std::to_string(input.Byte() % 10));
  set("BitsCount", std::to_string(input.Word() % 1100));
  set("Coding", kCodings[input.Byte() % kCodings.size()]);
  set("ByteOrder", input.Byte() % 2 == 0 ? "big" : "little");
  set("Step", kFactors[input.Byte() % kFactors.size()]);
  set("Offset", kFactors[input.Byte() % kFactors.size()]);
  return ecu::ReadDataItem(node);
}

bool KeepsEveryBit(const ecu::ItemDescription& item) {
  switch (item.coding) {
    case ecu::Coding::kBytes:
      return true;
    case ecu::Coding::kUnsigned:
    case ecu::Coding::kSigned:
    case ecu::Coding::kBcd:
      return !item.scaled && item.bits <= kExactBits;
    default:
      return false;
  }
}

void EncodeWhatWasDecoded(const ecu::ItemDescription& item, const base::ByteBuffer& message) {
  base::ByteBuffer copy = message;
  const base::Variant value = ecu::DecodeItem(item, message.View());
  const std::string text = ecu::DecodeText(item, message.View());
  fuzz::Require(!value.IsEmpty() || text.empty(), "an item without a value has no text");
  if (value.IsEmpty()) return;
  try {
    ecu::EncodeItem(item, value, copy);
  } catch (const base::Failure&) {
    fuzz::Require(copy == message, "a refused value changes nothing");
    fuzz::Require(!KeepsEveryBit(item), "what was decoded can be encoded");
    return;
  }
  fuzz::Require(!KeepsEveryBit(item) || copy == message, "what was decoded is encoded as the same bits");
}

void EncodeAnything(const ecu::ItemDescription& item, base::ByteBuffer message) {
  for (const double value : {0.0, -1.0, 1e18, -1e308, 0.4999999999999999, std::nan("")}) {
    try {
      ecu::EncodeItem(item, value, message);
      ecu::EncodeText(item, base::Variant(value).ToText(), message);
      ecu::EncodeClamped(item, value, message);
    } catch (const base::Failure& failure) {
      fuzz::Require(!failure.Description().empty(), "a refusal says why");
    }
  }
}

void PlanAsDecoded(const ecu::ItemDescription& item, const base::ByteBuffer& message) {
  const auto expected = ecu::DecodeItem(item, message.View()).ToSingle();
  const auto single = ecu::ItemPlan(item).Single(message.View());
  fuzz::Require(single.has_value() == expected.has_value(), "a plan has a value where decoding has one");
  fuzz::Require(!single || std::bit_cast<std::uint32_t>(*single) == std::bit_cast<std::uint32_t>(*expected),
                "a plan gives the decoded value");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const auto item = ReadItem(input);
  if (!item) return 0;
  base::ByteBuffer message(input.Rest());
  EncodeWhatWasDecoded(*item, message);
  PlanAsDecoded(*item, message);
  if (message.Length() < item->BytesNeeded()) message.SetLength(item->BytesNeeded());
  EncodeWhatWasDecoded(*item, message);
  PlanAsDecoded(*item, message);
  EncodeAnything(*item, message);
  return 0;
}
