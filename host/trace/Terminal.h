// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

namespace korval::host {

/// The multi-line text box that shows the trace (`txtTerm`). Positions and lengths count characters, and
/// a line end counts as two, CR and LF. Text is UTF-8. The owner outlives everyone who traces.
class Terminal {
 public:
  virtual ~Terminal() = default;
  virtual std::size_t Length() const = 0;
  /// Removes the first `count` characters, or all when there are fewer.
  virtual void DropFirst(std::size_t count) = 0;
  /// Puts the caret at `start` (0 to Length) and selects `length` characters from there.
  virtual void Select(std::size_t start, std::size_t length) = 0;
  /// Puts `text` in place of the selection, or at the caret when nothing is selected.
  virtual void ReplaceSelection(std::string_view text) = 0;
};

}  // namespace korval::host
