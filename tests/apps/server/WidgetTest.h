// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>

#include <QApplication>
#include <gtest/gtest.h>

namespace korval::tests {

/// A test with widgets, which are drawn into memory.
class WidgetTest : public ::testing::Test {
 protected:
  static bool DrawIntoMemory() { return ::setenv("QT_QPA_PLATFORM", "offscreen", 1) == 0; }

  bool drawn_into_memory_ = DrawIntoMemory();  // before the application asks
  int argument_count_ = 1;
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  QApplication application_{argument_count_, arguments_};
};

}  // namespace korval::tests
