// SPDX-License-Identifier: MIT
#include "fuzz/CheckedTerminal.h"

#include <algorithm>
#include <string>

#include "base/VisibleText.h"
#include "fuzz/Require.h"

namespace korval::fuzz {
namespace {

bool StartsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }

std::size_t CharactersOf(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), StartsCharacter));
}

// Whatever a client sent, the one control character of a trace line is its end.
bool IsVisible(std::string_view text) {
  const std::string line(text.substr(0, text.find("\r\n")));
  return base::VisibleText(line) == line && (line.size() == text.size() || line.size() + 2 == text.size());
}

bool HasWholeLineEnds(std::string_view text) {
  char before = '\0';
  for (const char byte : text) {
    if ((before == '\r') != (byte == '\n')) return false;
    before = byte;
  }
  return before != '\r';
}

}  // namespace

void CheckedTerminal::DropFirst(std::size_t count) {
  length_ -= std::min(count, length_);
  Select(0, 0);
}

void CheckedTerminal::Select(std::size_t start, std::size_t length) {
  Require(start <= length_ && length <= length_ - start, "a selection lies inside the text");
  start_ = start;
  selected_ = length;
}

void CheckedTerminal::ReplaceSelection(std::string_view text) {
  Require(HasWholeLineEnds(text), "every line end is a CR LF");
  Require(IsVisible(text), "a piece of the trace is at most one line, without control characters");
  const std::size_t characters = CharactersOf(text);
  length_ = length_ - selected_ + characters;
  Select(start_ + characters, 0);
}

}  // namespace korval::fuzz
