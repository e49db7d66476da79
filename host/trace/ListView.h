// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
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
  /// Does nothing for a cell that does not exist.
  virtual void SetCell(std::size_t row, std::size_t column, const std::string& text) = 0;
};

}  // namespace korval::host
