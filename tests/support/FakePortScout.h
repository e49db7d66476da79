// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "diag/PortScout.h"

namespace korval::tests {

/// Interfaces that a test plugs in and pulls.
class FakePortScout : public diag::PortScout {
 public:
  std::string DeviceList() override {
    ++lists_given;
    return device_list;
  }
  void SetOnDevicesHaveChanged(std::function<void()> on_changed) override {
    on_changed_ = std::move(on_changed);
  }
  void Shutdown() override {
    ++shutdowns;
    on_changed_ = nullptr;
  }

  /// The interfaces are now those of `list`; whoever listens is told.
  void Change(const std::string& list) {
    device_list = list;
    if (const auto on_changed = on_changed_) on_changed();
  }
  bool IsWatched() const { return on_changed_ != nullptr; }

  std::string device_list;
  int lists_given = 0;
  int shutdowns = 0;

 private:
  std::function<void()> on_changed_;
};

}  // namespace korval::tests
