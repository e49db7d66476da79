// SPDX-License-Identifier: MIT
#include "host/trace/TraceConsole.h"

#include <algorithm>
#include <exception>

namespace korval::host {
namespace {

// Start of the UTF-8 character that ends before `position`.
std::size_t CharacterBefore(const std::string& text, std::size_t position) {
  std::size_t start = position - 1;
  while (start > 0 && (static_cast<unsigned char>(text[start]) & 0xC0U) == 0x80U) --start;
  return start;
}

void ApplyBackspaces(Terminal& terminal, std::size_t length, std::string& text) {
  for (std::size_t p = text.find('\b'); p != std::string::npos; p = text.find('\b')) {
    if (p == 0) {
      // The length is not counted down: several leading backspaces select the same last character.
      if (length > 0) terminal.Select(length - 1, 1);
      text.erase(0, 1);
    } else {
      const std::size_t start = CharacterBefore(text, p);
      text.erase(start, p - start + 1);
    }
  }
}

void NormaliseLineEnds(std::string& text) {
  text.erase(std::remove(text.begin(), text.end(), '\n'), text.end());
  for (std::size_t p = text.find('\r'); p != std::string::npos; p = text.find('\r', p + 1)) {
    text.insert(p + 1, 1, '\n');
  }
}

void AppendTo(Terminal& terminal, std::string& text) {
  if (terminal.Length() > kTerminalHighWater) terminal.DropFirst(kTerminalCut);
  const std::size_t length = terminal.Length();
  terminal.Select(length, 0);
  ApplyBackspaces(terminal, length, text);
  NormaliseLineEnds(text);
  terminal.ReplaceSelection(text);
  terminal.Select(terminal.Length(), 0);
}

}  // namespace

void TraceAppend(Terminal& terminal, std::string& text) noexcept {
  try {
    AppendTo(terminal, text);
  } catch (const std::exception&) {
    // The console must never stop the server, and there is nowhere else to report.
    text.clear();
  }
}

}  // namespace korval::host
