// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "diag/PortLabel.h"
#include "host/trace/ListView.h"
#include "host/trace/MessageBox.h"
#include "host/trace/StatusView.h"

namespace korval::apps {

/// Writes a piece of the trace to standard output at once, line ends as LF. On a terminal, control
/// characters that a client sent are shown as dots: they must not steer the reader's terminal.
void WriteTrace(std::string_view text);

/// A message box is a line on standard error.
class StderrMessageBox : public host::MessageBox {
 public:
  void Show(const std::string& text, host::MessageStyle style) override;
};

/// Without a window nobody sees lists and panels; what they tell stands in the trace as well.
class UnseenList : public host::ListView {
 public:
  void Clear() override {}
  void AddRow(const std::vector<std::string>&) override {}
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
