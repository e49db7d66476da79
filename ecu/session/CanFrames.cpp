// SPDX-License-Identifier: MIT
#include "ecu/session/CanFrames.h"

#include <string>
#include <string_view>

#include "base/Failure.h"
#include "base/NumberText.h"
#include "ecu/description/ErrorNumbers.h"

namespace korval::ecu {
namespace {

constexpr std::size_t kLongestData = 8;

base::ByteBuffer ReadData(const std::string& hex, const ErrorTable& errors) {
  base::ByteBuffer data;
  try {
    data = base::ByteBuffer::FromHex(hex);
  } catch (const base::Failure& failure) {
    throw errors.MakeFailure(kValueRefused, "CAN data '" + hex + "': " + failure.Description());
  }
  if (data.Length() > kLongestData) {
    throw errors.MakeFailure(kValueRefused, "CAN data '" + hex + "': a frame has at most 8 bytes");
  }
  return data;
}

std::int32_t ReadIdentifier(const std::string& text, const ErrorTable& errors) {
  const auto identifier = base::ReadInteger(text);
  if (!identifier)
    throw errors.MakeFailure(kValueRefused, "CAN identifier '" + text + "': no decimal number");
  return *identifier;
}

FrameToSend ReadFrame(const pugi::xml_node& identifier, const ErrorTable& errors) {
  const pugi::xml_node data = identifier.next_sibling();
  if (std::string_view(data.name()) != "s") {
    throw errors.MakeFailure(kValueRefused, "CAN identifier '" + std::string(identifier.child_value()) +
                                                "' is not followed by data");
  }
  return {ReadIdentifier(identifier.child_value(), errors), ReadData(data.child("d").child_value(), errors)};
}

}  // namespace

std::vector<FrameToSend> ReadCanFrames(const pugi::xml_document& document, const ErrorTable& errors) {
  std::vector<FrameToSend> frames;
  for (const pugi::xml_node& group : document.document_element().children("x")) {
    for (const pugi::xml_node& identifier : group.children("i"))
      frames.push_back(ReadFrame(identifier, errors));
  }
  return frames;
}

}  // namespace korval::ecu
