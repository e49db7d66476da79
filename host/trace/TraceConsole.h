// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "host/trace/Terminal.h"

namespace korval::host {

/// Terminal text above this many characters is cut before the next append ...
inline constexpr std::size_t kTerminalHighWater = 16000;
/// ... by this many characters from its start, even in the middle of a line.
inline constexpr std::size_t kTerminalCut = 4096;

/// Pieces longer than the cut can outrun it; no more than this many characters stay in front of a new piece.
inline constexpr std::size_t kTerminalLimit = 1'000'000;

/// Appends one piece of text to the terminal. Line ends CR, LF after CR and CR LF all become CR LF, a lone
/// LF vanishes, a backspace erases the character before it; leading backspaces erase one character of
/// the terminal, however many they are. Rewrites `text`, so that callers must not use it afterwards.
/// A failing terminal never reaches the caller.
void TraceAppend(Terminal& terminal, std::string& text) noexcept;

/// The server's one log: what happened, in order, on the terminal. Owned by the control; everything that
/// reports anything holds a reference.
class TraceConsole {
 public:
  explicit TraceConsole(Terminal& terminal) : terminal_(terminal) {}

  /// Appends the beginning of a line. Texts of clients and files are part of what is traced, so its control
  /// characters are written as base::VisibleText has them.
  void Append(std::string_view text);
  /// The same, and a line end.
  void Line(std::string_view text);

  /// Whether "Check & debug" is ticked: gates frame dumps and the traces of error records.
  bool DebugTrace() const noexcept { return debug_trace_; }
  void SetDebugTrace(bool on) noexcept { debug_trace_ = on; }

 private:
  Terminal& terminal_;
  bool debug_trace_ = false;
};

}  // namespace korval::host
