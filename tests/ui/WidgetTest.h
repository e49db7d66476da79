// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <ostream>

#include <QAbstractButton>
#include <QApplication>
#include <QDeadlineTimer>
#include <QTest>
#include <QWidget>
#include <gtest/gtest.h>

// Failure messages show the text.
inline void PrintTo(const QString& text, std::ostream* stream) {
  *stream << '"' << text.toStdString() << '"';
}

namespace korval::tests {

/// A widget under test, and what a person does with it.
class WidgetTest : public ::testing::Test {
 protected:
  /// Runs the events until `done`, at most five seconds.
  static bool RunUntil(const std::function<bool()>& done) { return QTest::qWaitFor(done, 5000); }

  /// The widget of that name, which must be there.
  template <typename Widget>
  static Widget& Find(const QWidget& parent, const char* name) {
    auto* found = parent.findChild<Widget*>(QString::fromLatin1(name));
    if (found == nullptr) throw std::runtime_error(std::string("there is no ") + name);
    return *found;
  }

  static void Show(QWidget& widget) {
    widget.show();
    widget.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&widget));
    QCoreApplication::processEvents();
  }
  static void Click(QWidget& widget) {
    // A check box reacts to clicks on its mark and text only, which stand at its left.
    QTest::mouseClick(&widget, Qt::LeftButton, {}, QPoint(8, widget.height() / 2));
  }
};

}  // namespace korval::tests
