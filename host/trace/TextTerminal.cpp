// SPDX-License-Identifier: MIT
#include "host/trace/TextTerminal.h"

#include <algorithm>

#include "base/AnsiText.h"

namespace korval::host {

void TextTerminal::DropFirst(std::size_t count) {
  text_.erase(0, count);
  Select(0, 0);
}

void TextTerminal::Select(std::size_t start, std::size_t length) {
  start_ = std::min(start, text_.size());
  length_ = std::min(length, text_.size() - start_);
}

void TextTerminal::ReplaceSelection(std::string_view text) {
  std::u32string characters;
  characters.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    characters.push_back(base::NextCharacter(text, position));
  }
  text_.replace(start_, length_, characters);
  Select(start_ + characters.size(), 0);
  if (sink_ && !text.empty()) sink_(text);
}

std::string TextTerminal::Text() const {
  std::string utf8;
  for (const char32_t character : text_) base::AppendCharacter(utf8, character);
  return utf8;
}

}  // namespace korval::host
