// SPDX-License-Identifier: MIT
#include "host/trace/TraceConsole.h"

#include <exception>
#include <utility>

#include "base/VisibleText.h"

namespace korval::host {
namespace {

// Start of the UTF-8 character that ends before `position`.
std::size_t CharacterBefore(const std::string& text, std::size_t position) {
  std::size_t start = position - 1;
  while (start > 0 && (static_cast<unsigned char>(text[start]) & 0xC0U) == 0x80U) --start;
  return start;
}

// A backspace takes the character before it away, one at the start the terminal's last.
void ApplyBackspaces(Terminal& terminal, std::size_t length, std::string& text) {
  if (text.find('\b') == std::string::npos) return;
  std::string kept;
  kept.reserve(text.size());
  bool takes_last = false;  // once, however many there are: the length is not counted down
  for (const char character : text) {
    if (character != '\b') {
      kept.push_back(character);
    } else if (kept.empty()) {
      takes_last = true;
    } else {
      kept.erase(CharacterBefore(kept, kept.size()));
    }
  }
  if (takes_last && length > 0) terminal.Select(length - 1, 1);
  text = std::move(kept);
}

void NormaliseLineEnds(std::string& text) {
  std::string lines;
  lines.reserve(text.size() + 2);
  for (const char character : text) {
    if (character == '\n') continue;
    lines.push_back(character);
    if (character == '\r') lines.push_back('\n');
  }
  text = std::move(lines);
}

void AppendTo(Terminal& terminal, std::string& text) {
  if (terminal.Length() > kTerminalHighWater) terminal.DropFirst(kTerminalCut);
  if (terminal.Length() > kTerminalLimit) terminal.DropFirst(terminal.Length() - kTerminalLimit);
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

void TraceConsole::Append(std::string_view text) {
  std::string piece = base::VisibleText(text);
  TraceAppend(terminal_, piece);
}

void TraceConsole::Line(std::string_view text) {
  std::string line = base::VisibleText(text) + "\r\n";
  TraceAppend(terminal_, line);
}

}  // namespace korval::host
