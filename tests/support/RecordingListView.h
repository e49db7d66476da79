// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/trace/ListView.h"

namespace korval::tests {

/// A list that keeps its cells, and counts how often it was emptied.
class RecordingListView : public host::ListView {
 public:
  void Clear() override {
    ++clears;
    rows.clear();
  }
  void AddRow(const std::vector<std::string>& cells) override { rows.push_back(cells); }
  void RebuildWhenShown(std::function<void()> build) override {
    Clear();
    build();
  }
  void SetCell(std::size_t row, std::size_t column, const std::string& text) override {
    if (row < rows.size() && column < rows[row].size()) rows[row][column] = text;
  }
  // Every moment is one at which somebody looks.
  void SetCellsWhenShown(std::function<void()> write) override { write(); }

  std::vector<std::vector<std::string>> rows;
  int clears = 0;
};

}  // namespace korval::tests
