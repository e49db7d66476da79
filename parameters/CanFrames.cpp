// SPDX-License-Identifier: MIT
#include "parameters/CanFrames.h"

#include <charconv>
#include <cstdint>
#include <sstream>

#include <pugixml.hpp>

#include "base/AnsiText.h"

namespace korval::parameters {
namespace {

constexpr std::size_t kIdentifierLength = 8;

// Frames come as any text: their characters are counted, not their bytes.
std::size_t CharacterCount(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t position = 0; position < text.size(); ++count) base::NextCharacter(text, position);
  return count;
}

std::size_t IdentifierEnd(std::string_view frame) {
  std::size_t position = 0;
  for (std::size_t i = 0; i < kIdentifierLength; ++i) base::NextCharacter(frame, position);
  return position;
}

std::int32_t Identifier(std::string_view digits) {
  std::uint32_t value = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  return static_cast<std::int32_t>(value);
}

}  // namespace

std::vector<std::string_view> SplitFrames(std::string_view text) {
  std::vector<std::string_view> frames;
  if (text.empty()) return frames;
  std::size_t start = 0;
  for (std::size_t end = text.find(';'); end != std::string_view::npos; end = text.find(';', start)) {
    frames.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  frames.push_back(text.substr(start));
  return frames;
}

std::optional<viator3::CanFrame> ReadFrame(std::string_view frame) {
  const std::size_t length = CharacterCount(frame);
  // XML cannot carry a NUL, which would cut the data unseen in the trace.
  const bool has_nul = frame.find('\0') != std::string_view::npos;
  if (length < kIdentifierLength || (length - kIdentifierLength) % 2 != 0 || has_nul) return std::nullopt;
  const std::size_t data = IdentifierEnd(frame);
  return viator3::CanFrame{Identifier(frame.substr(0, data)), std::string(frame.substr(data))};
}

std::string CanDocumentText(std::span<const viator3::CanFrame> frames) {
  pugi::xml_document document;
  pugi::xml_node group = document.append_child("can").append_child("x");
  group.append_attribute("i") = 0;
  for (const viator3::CanFrame& frame : frames) {
    group.append_child("i").text() = frame.identifier;
    pugi::xml_node digits = group.append_child("s").append_child("d");
    if (!frame.data.empty()) digits.text().set(frame.data.c_str());
  }
  std::ostringstream text;
  document.save(text, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
  return text.str();
}

}  // namespace korval::parameters
