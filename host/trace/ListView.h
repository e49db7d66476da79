// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace korval::host {

/// A list on the console: `LVfile` (selected files) or `LVdata` (acquired data). Rows and columns count
/// from 0, texts are UTF-8.
class ListView {
 public:
  virtual ~ListView() = default;
  virtual void Clear() = 0;
  virtual void AddRow(const std::vector<std::string>& cells) = 0;
  /// Takes the place of all rows: `build` adds each, once and before the rows are shown next. A later one
  /// takes its place, Clear forgets it. What it stands on it holds itself.
  virtual void RebuildWhenShown(std::function<void()> build) = 0;
  /// Does nothing for a cell that does not exist.
  virtual void SetCell(std::size_t row, std::size_t column, const std::string& text) = 0;
  /// For cells that change more often than anybody sees: `write` calls SetCell, once and before the rows are
  /// shown next. A later one takes its place, Clear forgets it. What it stands on it holds itself.
  virtual void SetCellsWhenShown(std::function<void()> write) = 0;
};

}  // namespace korval::host
