// SPDX-License-Identifier: MIT
#include <cstdio>
#include <fstream>
#include <sstream>

#include <QClipboard>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QScrollBar>
#include <QTemporaryDir>
#include <malloc.h>

#include "host/trace/TraceConsole.h"
#include "tests/ui/WidgetTest.h"
#include "ui/FindBar.h"
#include "ui/TerminalBox.h"
#include "ui/TerminalView.h"

#ifdef __SANITIZE_ADDRESS__
// Not every compiler comes with the header.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace korval::tests {
namespace {

std::size_t AllocatedBytes() {
#ifdef __SANITIZE_ADDRESS__
  return __sanitizer_get_current_allocated_bytes();
#else
  return mallinfo2().uordblks;
#endif
}

class TerminalTest : public WidgetTest {
 protected:
  TerminalTest() { box_.resize(600, 300); }

  QString Shown() {
    view_.ShowNow();
    return box_.toPlainText();
  }
  void Select(int start, int end) {
    QTextCursor cursor = box_.textCursor();
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    box_.setTextCursor(cursor);
  }
  QString Selected() const { return box_.textCursor().selectedText(); }
  void Fill(int lines) {
    for (int i = 0; i < lines; ++i) console_.Line("line " + std::to_string(i));
    view_.ShowNow();
  }

  ui::TerminalBox box_;
  ui::TerminalView view_{&box_};
  host::TraceConsole console_{view_};
};

TEST_F(TerminalTest, ALineEndCountsAsTwoCharacters) {
  console_.Line("ab");
  EXPECT_EQ(view_.Length(), 4U);
  EXPECT_EQ(Shown(), "ab\n");
}

TEST_F(TerminalTest, ACharacterOfSeveralBytesCountsAsOne) {
  console_.Append(
      "\xC2\xB0"
      "C");
  EXPECT_EQ(view_.Length(), 2U);
  EXPECT_EQ(Shown(), QString::fromUtf8("\xC2\xB0"
                                       "C"));
}

TEST_F(TerminalTest, BackspacesAndLineEndsAreShownAsTheyWereAppended) {
  const auto append = [this](std::string text) { host::TraceAppend(view_, text); };
  append("abc\bd");
  EXPECT_EQ(Shown(), "abd");
  append("\b\bX");
  EXPECT_EQ(Shown(), "abX");
  append("x\ny");
  EXPECT_EQ(Shown(), "abXxy");
  append("\rz");
  EXPECT_EQ(Shown(), "abXxy\nz");
}

TEST_F(TerminalTest, TheOldestTextIsDroppedFromTheBoxToo) {
  const std::string text(16001, 'x');
  console_.Append(text);
  EXPECT_EQ(Shown().size(), 16001);
  console_.Append("end");
  EXPECT_EQ(Shown().size(), 16001 - 4096 + 3);
  EXPECT_TRUE(Shown().endsWith("xend"));
}

TEST_F(TerminalTest, TheBoxHoldsTheSameTextAfterAnyMixOfAppendingAndDropping) {
  for (int i = 0; i < 3000; ++i) {
    console_.Line(std::string(static_cast<std::size_t>(i % 37), 'a') + std::to_string(i));
    if (i % 7 == 0) view_.ShowNow();
  }
  EXPECT_EQ(Shown(), QString::fromStdString(view_.Text()).remove('\r'));
}

TEST_F(TerminalTest, TheBoxFollowsByATimer) {
  console_.Line("later");
  EXPECT_EQ(box_.toPlainText(), "");
  EXPECT_TRUE(RunUntil([this] { return box_.toPlainText() == "later\n"; }));
}

TEST_F(TerminalTest, ABurstOfTracesChangesTheBoxAtMostTwentyTimesASecond) {
  Show(box_);
  int changes = 0;
  QObject::connect(&box_, &QPlainTextEdit::textChanged, [&changes] { ++changes; });
  QElapsedTimer clock;
  clock.start();
  for (int i = 0; i < 100000; ++i) {
    console_.Line("Byte received : 000600020008 " + std::to_string(i));
    if (i % 100 == 0) QCoreApplication::processEvents();
  }
  EXPECT_TRUE(RunUntil([this] { return box_.toPlainText().endsWith(" 99999\n"); }));
  const auto most = clock.elapsed() / 50 + 2;
  // Removing the oldest and appending the newest are two changes.
  EXPECT_LE(changes, 2 * most);
}

TEST_F(TerminalTest, ABurstOfTracesLeavesNoMemoryBehind) {
  Show(box_);
  const auto burst = [this] {
    for (int i = 0; i < 100000; ++i) {
      console_.Line("Byte received : 000600020008 " + std::to_string(i));
      if (i % 500 == 0) QCoreApplication::processEvents();
    }
    view_.ShowNow();
  };
  burst();
  const std::size_t before = AllocatedBytes();
  burst();
  // The text itself would take 4 MB, and many times that in a document.
  EXPECT_LT(AllocatedBytes(), before + 1000000);
  EXPECT_LE(box_.toPlainText().size(), 16000 + 64);
}

TEST_F(TerminalTest, TheBoxStaysAtTheNewestText) {
  Show(box_);
  Fill(200);
  EXPECT_EQ(box_.verticalScrollBar()->value(), box_.verticalScrollBar()->maximum());
  Fill(1);
  EXPECT_EQ(box_.verticalScrollBar()->value(), box_.verticalScrollBar()->maximum());
}

TEST_F(TerminalTest, AReaderWhoScrolledUpIsLeftThere) {
  Show(box_);
  Fill(200);
  box_.verticalScrollBar()->setValue(10);
  Fill(5);
  EXPECT_EQ(box_.verticalScrollBar()->value(), 10);
}

TEST_F(TerminalTest, ASelectionSurvivesNewTextAndTheDroppingOfOldText) {
  console_.Append(std::string(10000, 'x') + "KEEP" + std::string(6000, 'y'));
  view_.ShowNow();
  Select(10000, 10004);
  console_.Append("more");
  view_.ShowNow();
  EXPECT_EQ(Selected(), "KEEP");
  EXPECT_EQ(box_.textCursor().selectionStart(), 10000 - 4096);
}

TEST_F(TerminalTest, ASelectionSurvivesACutThroughALineEndAndACharacterOutsideTheBasicPlane) {
  console_.Line("a");
  console_.Line("\xF0\x9F\x94\xA7");
  console_.Append("KEEP");
  view_.ShowNow();
  EXPECT_EQ(box_.toPlainText(), QString::fromUtf8("a\n\xF0\x9F\x94\xA7\nKEEP"));
  Select(5, 9);
  ASSERT_EQ(Selected(), "KEEP");
  view_.DropFirst(2);
  EXPECT_EQ(Shown(), QString::fromUtf8("\n\xF0\x9F\x94\xA7\nKEEP"));
  EXPECT_EQ(Selected(), "KEEP");
  view_.DropFirst(1);
  view_.DropFirst(2);
  EXPECT_EQ(Shown(), "\nKEEP");
  EXPECT_EQ(Selected(), "KEEP");
}

TEST_F(TerminalTest, ACutOfMoreThanThereIsEmptiesTheBox) {
  console_.Line("short");
  view_.ShowNow();
  view_.DropFirst(1000);
  view_.DropFirst(1000);
  console_.Append("next");
  EXPECT_EQ(Shown(), "next");
}

TEST_F(TerminalTest, WhatIsSelectedCanBeCopied) {
  console_.Line("copy me");
  view_.ShowNow();
  Show(box_);
  QTest::keySequence(&box_, QKeySequence::SelectAll);
  QTest::keySequence(&box_, QKeySequence::Copy);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "copy me\n");
}

TEST_F(TerminalTest, TypingDoesNotChangeTheTrace) {
  console_.Line("trace");
  view_.ShowNow();
  Show(box_);
  QTest::keyClicks(&box_, "typed");
  QTest::keyClick(&box_, Qt::Key_Delete);
  EXPECT_EQ(box_.toPlainText(), "trace\n");
}

TEST_F(TerminalTest, TheTraceCanBeSavedAsText) {
  const QTemporaryDir folder;
  const QString path = folder.filePath("trace.txt");
  console_.Line("first");
  console_.Line(
      "20 \xC2\xB0"
      "C");
  view_.ShowNow();
  box_.SaveAs();
  auto* dialog = box_.findChild<QFileDialog*>();
  ASSERT_NE(dialog, nullptr);
  EXPECT_FALSE(dialog->isModal());
  emit dialog->fileSelected(path);
  std::ifstream file(path.toStdString());
  std::stringstream text;
  text << file.rdbuf();
  EXPECT_EQ(text.str(),
            "first\n20 \xC2\xB0"
            "C\n");
}

TEST_F(TerminalTest, ATraceThatCannotBeSavedIsTold) {
  box_.SaveAs();
  emit box_.findChild<QFileDialog*>()->fileSelected("/nowhere/at/all/trace.txt");
  const auto* told = box_.findChild<QMessageBox*>();
  ASSERT_NE(told, nullptr);
  EXPECT_TRUE(told->text().contains("/nowhere/at/all/trace.txt"));
  EXPECT_FALSE(told->isModal());
}

TEST_F(TerminalTest, TheContextMenuOffersCopySelectAllFindAndSave) {
  Show(box_);
  QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5), QPoint(5, 5));
  QCoreApplication::sendEvent(&box_, &event);
  const auto* menu = box_.findChild<QMenu*>();
  ASSERT_NE(menu, nullptr);
  QStringList texts;
  for (const QAction* action : menu->actions()) {
    if (!action->isSeparator()) texts << action->text();
  }
  EXPECT_EQ(texts, QStringList({"&Copy", "Select &all", "&Find...", "&Save as text..."}));
}

TEST_F(TerminalTest, TheTerminalMayOutliveItsBox) {
  auto box = std::make_unique<ui::TerminalBox>();
  ui::TerminalView view(box.get());
  host::TraceConsole console(view);
  console.Line("before");
  box.reset();
  console.Line("after");
  view.ShowNow();
  EXPECT_EQ(view.Text(), "before\r\nafter\r\n");
}

class FindBarTest : public TerminalTest {
 protected:
  FindBarTest() {
    console_.Line("alpha");
    console_.Line("Beta");
    console_.Line("alpha again");
    view_.ShowNow();
  }
  void OpenBar() {
    Show(box_);
    bar_->Open();
  }
  void Type(const char* text) { QTest::keyClicks(&Text(), text); }
  QLineEdit& Text() { return Find<QLineEdit>(*bar_, "findText"); }
  int Position() const { return box_.textCursor().selectionStart(); }

  ui::FindBar* bar_ = new ui::FindBar(&box_, &box_);
};

TEST_F(FindBarTest, FindsAsTheTextIsTypedWithoutRegardToCase) {
  OpenBar();
  Type("be");
  EXPECT_EQ(Selected(), "Be");
}

TEST_F(FindBarTest, GoesForwardsAndBackwardsAroundTheEnds) {
  OpenBar();
  Type("alpha");
  const int first = Position();
  QTest::keyClick(&Text(), Qt::Key_Return);
  EXPECT_NE(Position(), first);
  QTest::keyClick(&Text(), Qt::Key_Return);
  EXPECT_EQ(Position(), first);
  QTest::keyClick(&Text(), Qt::Key_Return, Qt::ShiftModifier);
  EXPECT_NE(Position(), first);
}

TEST_F(FindBarTest, ATextThatIsNotThereIsMarkedAndLeavesTheSelection) {
  OpenBar();
  Type("alpha");
  const QColor usual = Text().palette().color(QPalette::Text);
  Type("bet");
  EXPECT_EQ(Selected(), "");
  EXPECT_NE(Text().palette().color(QPalette::Text), usual);
  EXPECT_EQ(Text().toolTip(), "Not found");
}

TEST_F(FindBarTest, EscapeClosesTheBarAndGoesBackToTheTrace) {
  OpenBar();
  QTest::keyClick(&Text(), Qt::Key_Escape);
  EXPECT_FALSE(bar_->isVisible());
  EXPECT_TRUE(box_.hasFocus());
}

TEST_F(FindBarTest, OpensWithTheSelectedText) {
  Select(6, 10);
  OpenBar();
  EXPECT_EQ(Text().text(), "Beta");
}

}  // namespace
}  // namespace korval::tests
