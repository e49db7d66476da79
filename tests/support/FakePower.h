// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "base/Failure.h"
#include "host/power/PowerPlatform.h"
#include "host/trace/MessageBox.h"
#include "tests/support/CallLog.h"

namespace korval::tests {

/// A computer that only logs "ExitWindows FLAGS", and refuses when told so. No privilege is ever needed.
class FakePower : public host::PowerPlatform {
 public:
  explicit FakePower(CallLog& log) : log_(log) {}

  /// When set, ExitWindows raises Failure with this text.
  std::string failure;

  bool GetVersion(host::OsVersion& version) override {
    version = {6, 1, 2};
    return true;
  }
  std::uint32_t GetCurrentProcess() override { return 0; }
  std::uint32_t OpenProcessToken(std::uint32_t) override { return 0; }
  std::uint32_t LookupPrivilegeValue(const std::string&) override { return 0; }
  std::uint32_t AdjustTokenPrivileges() override { return 0; }
  void ExitWindows(std::uint32_t flags, std::uint32_t) override {
    log_.push_back("ExitWindows " + std::to_string(flags));
    if (!failure.empty()) throw base::Failure(failure);
  }

 private:
  CallLog& log_;
};

/// Logs "box TEXT".
class FakeMessageBox : public host::MessageBox {
 public:
  explicit FakeMessageBox(CallLog& log) : log_(log) {}
  void Show(const std::string& text, host::MessageStyle) override { log_.push_back("box " + text); }

 private:
  CallLog& log_;
};

}  // namespace korval::tests
