// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "base/BackgroundWriter.h"
#include "diag/PortLabel.h"
#include "host/trace/ListView.h"
#include "host/trace/MessageBox.h"
#include "host/trace/RepeatedLines.h"
#include "host/trace/StatusView.h"
#include "platform/QtEventLoop.h"

namespace korval::apps {

/// Standard output and standard error of a server without a window. Nothing here waits for whoever reads
/// them, and lines that come again and again are counted.
class HeadlessConsole {
 public:
  /// `on_output_lost` is told once, on a thread of the console's own, why standard output takes nothing more.
  explicit HeadlessConsole(std::function<void(std::error_code)> on_output_lost);

  /// A piece of the trace goes to standard output, line ends as LF.
  void Trace(std::string_view text);
  /// A sentence goes to standard error as a line, its control characters as base::VisibleText has them.
  void Error(const std::string& sentence);
  /// Writes what the trace still holds, as far as it is taken. Nothing is traced afterwards.
  void FinishTrace();

 private:
  void Write(std::string_view text);

  platform::QtEventLoop loop_;
  base::BackgroundWriter output_;
  base::BackgroundWriter errors_;
  host::RepeatedLines repeated_;
};

/// A message box is a line on standard error.
class StderrMessageBox : public host::MessageBox {
 public:
  explicit StderrMessageBox(std::shared_ptr<HeadlessConsole> console) : console_(std::move(console)) {}
  void Show(const std::string& text, host::MessageStyle) override { console_->Error(text); }

 private:
  std::shared_ptr<HeadlessConsole> console_;
};

/// Without a window nobody sees lists and panels; what they tell stands in the trace as well.
class UnseenList : public host::ListView {
 public:
  void Clear() override {}
  void AddRow(const std::vector<std::string>&) override {}
  void RebuildWhenShown(std::function<void()>) override {}
  void SetCell(std::size_t, std::size_t, const std::string&) override {}
  void SetCellsWhenShown(std::function<void()>) override {}
};

class UnseenPortLabel : public diag::PortLabel {
 public:
  void SetCaption(const std::string&) override {}
  void SetToolTip(const std::string&) override {}
  void SetForeColour(std::int32_t) override {}
};

class UnseenStatus : public host::StatusView {
 public:
  void ShowSessionStatus(const std::string&) override {}
  void ShowRemoteSystem(const std::string&) override {}
  void ShowPanel(const std::string&, const std::string&) override {}
  void ShowConnected(bool) override {}
};

}  // namespace korval::apps
