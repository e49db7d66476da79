// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <functional>
#include <utility>

#include <QPointer>

#include "host/trace/ListView.h"
#include "ui/Refresh.h"
#include "ui/RowList.h"

namespace korval::ui {

/// A list of the console on its widget, which may go first. The widget follows by a timer.
class RowListView : public host::ListView {
 public:
  explicit RowListView(RowList* list) : list_(list), refresh_(list, [this] { ShowNow(); }) {}

  void Clear() override {
    write_ = nullptr;
    build_ = nullptr;
    if (!list_) return;
    list_->Rows().Clear();
    refresh_.Ask();
  }
  void RebuildWhenShown(std::function<void()> build) override {
    if (!list_) return;
    write_ = nullptr;
    build_ = std::move(build);
    refresh_.Ask();
  }
  void AddRow(const std::vector<std::string>& cells) override {
    if (!list_) return;
    BuildRows();
    list_->Rows().AddRow(cells);
    refresh_.Ask();
  }
  void SetCell(std::size_t row, std::size_t column, const std::string& text) override {
    if (!list_) return;
    BuildRows();
    list_->Rows().SetCell(row, column, text);
    refresh_.Ask();
  }
  void SetCellsWhenShown(std::function<void()> write) override {
    if (!list_) return;
    write_ = std::move(write);
    refresh_.Ask();
  }

  /// Brings the widget up to date at once.
  void ShowNow() {
    if (!list_) return;
    BuildRows();
    WriteCells();
    list_->Rows().Show();
  }

 private:
  void BuildRows() {
    const auto build = std::exchange(build_, nullptr);
    if (!build) return;
    list_->Rows().Clear();
    build();
  }
  // The values may be those of a host's session, and above a timer nobody is left to catch what they raise:
  // the cells keep the texts that they have.
  void WriteCells() {
    const auto write = std::exchange(write_, nullptr);
    if (!write) return;
    try {
      write();
    } catch (const std::exception&) {
      return;
    }
  }

  QPointer<RowList> list_;
  Refresh refresh_;
  std::function<void()> build_;
  std::function<void()> write_;
};

}  // namespace korval::ui
