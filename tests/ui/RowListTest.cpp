// SPDX-License-Identifier: MIT
#include <stdexcept>

#include <QClipboard>
#include <QHeaderView>

#include "tests/ui/WidgetTest.h"
#include "ui/RowList.h"
#include "ui/RowListView.h"

namespace korval::tests {
namespace {

class RowListTest : public WidgetTest {
 protected:
  RowListTest() { list_.resize(400, 200); }

  QStringList Column(int column) {
    view_.ShowNow();
    QStringList cells;
    for (int row = 0; row < list_.model()->rowCount(); ++row) {
      cells << list_.model()->index(row, column).data().toString();
    }
    return cells;
  }
  void ClickHeader(int column) {
    QHeaderView& header = *list_.header();
    const QPoint place(header.sectionViewportPosition(column) + 5, header.height() / 2);
    QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, place);
  }

  ui::RowList list_{"LVdata", "Acquired data", {"Data", "Value"}};
  ui::RowListView view_{&list_};
};

TEST_F(RowListTest, ShowsRowsInTheOrderInWhichTheyWereAdded) {
  view_.AddRow({"N", "812.5"});
  view_.AddRow({"A", "90"});
  EXPECT_EQ(Column(0), QStringList({"N", "A"}));
  EXPECT_EQ(Column(1), QStringList({"812.5", "90"}));
}

TEST_F(RowListTest, ShowsACellThatChanges) {
  view_.AddRow({"N", ""});
  Column(0);
  view_.SetCell(0, 1,
                "20 \xC2\xB0"
                "C");
  EXPECT_EQ(Column(1), QStringList({QString::fromUtf8("20 \xC2\xB0"
                                                      "C")}));
}

TEST_F(RowListTest, ShowsTheControlCharactersOfANameVisibly) {
  view_.AddRow({std::string("a\0b\r\nc", 6), "1"});
  EXPECT_EQ(Column(0), QStringList({R"(a\x00b\x0D\x0Ac)"}));
}

TEST_F(RowListTest, IgnoresACellThatDoesNotExist) {
  view_.AddRow({"N", "1"});
  view_.SetCell(1, 0, "x");
  view_.SetCell(0, 2, "x");
  EXPECT_EQ(Column(0), QStringList({"N"}));
}

TEST_F(RowListTest, ClearEmptiesTheList) {
  view_.AddRow({"N", "1"});
  Column(0);
  view_.Clear();
  view_.SetCell(0, 0, "x");
  EXPECT_EQ(Column(0), QStringList());
}

TEST_F(RowListTest, ARowWithFewerCellsHasEmptyOnesAndOneWithMoreLosesThem) {
  view_.AddRow({"N"});
  view_.AddRow({"A", "1", "lost"});
  EXPECT_EQ(Column(1), QStringList({"", "1"}));
}

TEST_F(RowListTest, RowsOfARebuildTakeThePlaceOfAllWhenTheyAreShown) {
  view_.AddRow({"N", "1"});
  Column(0);
  int builds = 0;
  for (int asked = 0; asked < 3; ++asked) {
    view_.RebuildWhenShown([&] { view_.AddRow({"A", "2"}), view_.AddRow({"B", "3"}), ++builds; });
  }
  view_.SetCell(1, 1, "4");
  EXPECT_EQ(Column(0), QStringList({"A", "B"}));
  EXPECT_EQ(Column(1), QStringList({"2", "4"}));
  EXPECT_EQ(builds, 1);
  view_.RebuildWhenShown([this] { view_.AddRow({"lost", ""}); });
  view_.Clear();
  EXPECT_EQ(Column(0), QStringList());
}

TEST_F(RowListTest, RowsThatFollowThoseShownAreAddedToThem) {
  view_.AddRow({"A", "1"});
  Column(0);
  list_.setCurrentIndex(list_.model()->index(0, 0));
  view_.RebuildWhenShown([this] { view_.AddRow({"A", "1"}), view_.AddRow({"B", "2"}); });
  EXPECT_EQ(Column(0), QStringList({"A", "B"}));
  EXPECT_EQ(list_.currentIndex().row(), 0) << "the list was made anew";
  view_.RebuildWhenShown([this] { view_.AddRow({"B", "2"}); });
  EXPECT_EQ(Column(0), QStringList({"B"}));
}

TEST_F(RowListTest, TheWidgetFollowsByATimer) {
  view_.AddRow({"N", "1"});
  EXPECT_EQ(list_.model()->rowCount(), 0);
  EXPECT_TRUE(RunUntil([this] { return list_.model()->rowCount() == 1; }));
}

TEST_F(RowListTest, CellsForTheNextShowingAreWrittenOnceAndAsTheyThenStand) {
  view_.AddRow({"N", ""});
  int value = 1;
  int writes = 0;
  for (int asked = 0; asked < 3; ++asked) {
    view_.SetCellsWhenShown([&] { view_.SetCell(0, 1, std::to_string(value)), ++writes; });
  }
  value = 2;
  EXPECT_EQ(Column(1), QStringList({"2"}));
  EXPECT_EQ(Column(1), QStringList({"2"}));
  EXPECT_EQ(writes, 1);
}

TEST_F(RowListTest, TheWidgetAsksByATimerForCellsOfTheNextShowing) {
  view_.AddRow({"N", ""});
  Column(0);
  view_.SetCellsWhenShown([this] { view_.SetCell(0, 1, "7"); });
  EXPECT_TRUE(RunUntil([this] { return list_.model()->index(0, 1).data().toString() == "7"; }));
}

TEST_F(RowListTest, ClearForgetsCellsOfTheNextShowing) {
  view_.SetCellsWhenShown([this] { view_.SetCell(0, 0, "old"); });
  view_.Clear();
  view_.AddRow({"new", ""});
  EXPECT_EQ(Column(0), QStringList({"new"}));
}

TEST_F(RowListTest, AValueThatCannotBeHadLeavesItsCellAndTheOthersAreShown) {
  view_.AddRow({"N", "1"});
  view_.AddRow({"A", "2"});
  Column(0);
  view_.SetCellsWhenShown([this] {
    view_.SetCell(0, 1, "3");
    throw std::runtime_error("the host's session is gone");
  });
  EXPECT_TRUE(RunUntil([this] { return list_.model()->index(0, 1).data().toString() == "3"; }));
  EXPECT_EQ(Column(1), QStringList({"3", "2"}));
  view_.SetCellsWhenShown([this] { view_.SetCell(1, 1, "4"); });
  EXPECT_EQ(Column(1), QStringList({"3", "4"}));
}

TEST_F(RowListTest, AClickOnAHeaderSortsNumbersByValueAndAThirdGoesBackToTheListsOrder) {
  for (const char* value : {"9", "100", "-1.5"}) view_.AddRow({"x", value});
  Column(1);
  Show(list_);
  ClickHeader(1);
  EXPECT_EQ(Column(1), QStringList({"-1.5", "9", "100"}));
  ClickHeader(1);
  EXPECT_EQ(Column(1), QStringList({"100", "9", "-1.5"}));
  ClickHeader(1);
  EXPECT_EQ(Column(1), QStringList({"9", "100", "-1.5"}));
}

TEST_F(RowListTest, AValueThatChangesKeepsTheSorting) {
  for (const char* value : {"1", "2"}) view_.AddRow({value, value});
  Column(1);
  Show(list_);
  ClickHeader(1);
  view_.SetCell(0, 1, "3");
  EXPECT_EQ(Column(1), QStringList({"2", "3"}));
  EXPECT_EQ(Column(0), QStringList({"2", "1"}));
}

TEST_F(RowListTest, AChangedValueLeavesTheSelection) {
  view_.AddRow({"N", "1"});
  view_.AddRow({"A", "2"});
  Column(0);
  list_.setCurrentIndex(list_.model()->index(1, 0));
  view_.SetCell(0, 1, "5");
  Column(0);
  EXPECT_EQ(list_.currentIndex().row(), 1);
}

TEST_F(RowListTest, SelectedRowsAreCopiedAsASpreadsheetTakesThem) {
  view_.AddRow({"N", "1"});
  view_.AddRow({"A", "2"});
  Column(0);
  Show(list_);
  list_.selectAll();
  QTest::keySequence(&list_, QKeySequence::Copy);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "N\t1\nA\t2");
}

TEST_F(RowListTest, ColumnsCanBeResizedAndComeBackAsTheyWere) {
  list_.header()->resizeSection(0, 123);
  list_.header()->moveSection(0, 1);
  const QString kept = list_.Columns();
  ui::RowList other("LVdata", "Acquired data", {"Data", "Value"});
  other.SetColumns(kept);
  EXPECT_EQ(other.header()->sectionSize(0), 123);
  EXPECT_EQ(other.header()->visualIndex(0), 1);
}

TEST_F(RowListTest, AThousandValuesThatTickAreShownInOneRefresh) {
  for (int i = 0; i < 1000; ++i) view_.AddRow({"value " + std::to_string(i), "0"});
  Column(0);
  int refreshes = 0;
  QObject::connect(list_.model(), &QAbstractItemModel::dataChanged, [&refreshes] { ++refreshes; });
  for (std::size_t i = 0; i < 1000; ++i) view_.SetCell(i, 1, std::to_string(i));
  EXPECT_EQ(refreshes, 0);
  EXPECT_EQ(Column(1).back(), "999");
  EXPECT_EQ(refreshes, 1);
}

TEST_F(RowListTest, WithoutItsWidgetTheListHoldsOnToNoValues) {
  auto widget = std::make_unique<ui::RowList>("LVdata", "Acquired data", QStringList{"Data"});
  ui::RowListView view(widget.get());
  const auto items = std::make_shared<int>(0);
  view.SetCellsWhenShown([items] {});
  widget.reset();
  view.Clear();
  EXPECT_EQ(items.use_count(), 1);
  view.SetCellsWhenShown([items] {});
  EXPECT_EQ(items.use_count(), 1);
}

TEST_F(RowListTest, TheListMayOutliveItsWidget) {
  auto widget = std::make_unique<ui::RowList>("LVdata", "Acquired data", QStringList{"Data"});
  ui::RowListView view(widget.get());
  view.AddRow({"N"});
  widget.reset();
  view.AddRow({"A"});
  view.SetCell(0, 0, "x");
  view.Clear();
  view.ShowNow();
  EXPECT_EQ(list_.model()->rowCount(), 0);
}

}  // namespace
}  // namespace korval::tests
