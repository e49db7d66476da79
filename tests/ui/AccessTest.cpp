// SPDX-License-Identifier: MIT
// What a person needs who works by keyboard, by ear, on a dark desktop or on a fine screen.
#include <algorithm>
#include <cmath>
#include <set>

#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>

#include "tests/ui/ControlWidgetTest.h"
#include "ui/Colours.h"
#include "ui/Pictures.h"
#include "ui/PortLabelBox.h"

namespace korval::tests {
namespace {

// Relative luminance and contrast as in WCAG 2.1, 1.4.3.
double Luminance(const QColor& colour) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

double Contrast(const QColor& first, const QColor& second) {
  const double a = Luminance(first);
  const double b = Luminance(second);
  return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

constexpr double kLegible = 4.5;
constexpr double kVisible = 3;  // large text and pictures

class AccessTest : public ControlWidgetTest {
 protected:
  ~AccessTest() override { QApplication::setPalette(usual_); }

  // The widgets that the tab key goes to, in its order, once around.
  std::vector<QWidget*> TabOrder() {
    std::vector<QWidget*> order;
    std::set<QWidget*> seen;
    while (QWidget* focused = QApplication::focusWidget()) {
      if (!seen.insert(focused).second) break;
      order.push_back(focused);
      // A list or text box would take the plain key.
      QTest::keyClick(focused, Qt::Key_Tab,
                      focused->inherits("QPlainTextEdit") ? Qt::ControlModifier : Qt::NoModifier);
    }
    return order;
  }

  QPalette usual_ = QApplication::palette();
};

TEST_F(AccessTest, TheTabKeyGoesThroughEverythingFromTheTopToTheBottom) {
  CreateAndShow();
  Find<QWidget>("ResetAll").setFocus();
  const auto order = TabOrder();
  const auto place = [&](const char* name) {
    return std::find(order.begin(), order.end(), &Find<QWidget>(name)) - order.begin();
  };
  const auto count = static_cast<std::ptrdiff_t>(order.size());
  for (const char* name : {"ResetAll", "ReadData", "ReadIdent", "showvalue", "Check1", "imgNotConnected",
                           "LVfile", "LVdata", "txtTerm"}) {
    EXPECT_LT(place(name), count) << name << " cannot be reached";
  }
  EXPECT_LT(place("ResetAll"), place("ReadData"));
  EXPECT_LT(place("ReadIdent"), place("showvalue"));
  EXPECT_LT(place("imgNotConnected"), place("LVfile"));
  EXPECT_LT(place("LVfile"), place("LVdata"));
  EXPECT_LT(place("LVdata"), place("txtTerm"));
}

TEST_F(AccessTest, EveryButtonHasAKeyThatItsToolTipNames) {
  CreateAndShow();
  Find<QWidget>("LVfile").setFocus();
  EXPECT_TRUE(Find<QWidget>("Check1").toolTip().contains("F8"));
  QTest::keyClick(control_.get(), Qt::Key_F8);
  EXPECT_TRUE(Find<QCheckBox>("Check1").isChecked());
  QTest::keyClick(control_.get(), Qt::Key_F7);
  EXPECT_TRUE(Find<QCheckBox>("showvalue").isChecked());
  QTest::keyClick(control_.get(), Qt::Key_F9);
  EXPECT_TRUE(serial_->IsOpen());
  QTest::keyClick(control_.get(), Qt::Key_F9);
  EXPECT_FALSE(serial_->IsOpen());
  QTest::keyClick(control_.get(), Qt::Key_F5);
  EXPECT_TRUE(Trace().contains("Read data error : "));
  QTest::keyClick(control_.get(), Qt::Key_F6);
  EXPECT_TRUE(Trace().contains("Read ident error : "));
  QTest::keyClick(control_.get(), Qt::Key_R, Qt::ControlModifier);
  EXPECT_TRUE(Trace().contains("Reset All\n"));
  QTest::keySequence(control_.get(), QKeySequence::Find);
  EXPECT_TRUE(Find<QWidget>("findBar").isVisible());
  QTest::keyClick(control_.get(), Qt::Key_Comma, Qt::ControlModifier);
  EXPECT_TRUE(Find<QWidget>("ConfigComPort1").isVisible());
}

TEST_F(AccessTest, TheSpaceBarTogglesThePortOnItsImageAndKeepsTheFocusThere) {
  CreateAndShow();
  Find<QWidget>("imgNotConnected").setFocus();
  QTest::keyClick(&Find<QWidget>("imgNotConnected"), Qt::Key_Space);
  EXPECT_TRUE(serial_->IsOpen());
  EXPECT_TRUE(Find<QWidget>("imgConnected").hasFocus());
}

TEST_F(AccessTest, WhereverTheFocusGoesAScreenReaderHasAName) {
  CreateAndShow();
  Action("Properties").trigger();
  for (QWidget* widget : control_->findChildren<QWidget*>()) {
    if (widget->focusPolicy() == Qt::NoFocus || widget->focusProxy() != nullptr) continue;
    if (widget->objectName().startsWith("qt_") || widget->inherits("QScrollArea")) continue;
    const auto* reader = QAccessible::queryAccessibleInterface(widget);
    ASSERT_NE(reader, nullptr);
    EXPECT_FALSE(reader->text(QAccessible::Name).isEmpty())
        << widget->metaObject()->className() << " " << widget->objectName().toStdString();
  }
}

TEST_F(AccessTest, AScreenReaderHearsWhatTheLabelsAndPanelsShowAndWhatItIs) {
  CreateAndShow();
  Action("OpenComm").trigger();
  parts_.status->ShowPanel("Status", "Status: Online");
  parts_.status->ShowRemoteSystem("rig");
  for (const char* name :
       {"lbPort", "lbStatus", "lbRemote", "Status", "Settings", "timeout", "ConnectTime"}) {
    auto& label = Find<QLabel>(name);
    if (label.objectName() == "lbPort") label.setText("SIM");
    ASSERT_FALSE(label.text().isEmpty()) << name;
    const auto* reader = QAccessible::queryAccessibleInterface(&label);
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->text(QAccessible::Name), label.text()) << name;
    EXPECT_FALSE(reader->text(QAccessible::Description).isEmpty()) << name;
  }
}

TEST_F(AccessTest, ColoursAreLegibleOnALightAndOnADarkDesktop) {
  for (const QColor& window : {QColor(0xEF, 0xEF, 0xEF), QColor(0x2B, 0x2B, 0x2B)}) {
    QPalette palette(window);
    if (window.lightness() < 128) palette.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x1E));
    QApplication::setPalette(palette);
    EXPECT_GE(Contrast(ui::Blue(palette), palette.color(QPalette::Base)), kLegible);
    EXPECT_GE(Contrast(ui::Red(palette), palette.color(QPalette::Window)), kVisible);
    EXPECT_GE(Contrast(ui::Green(palette), palette.color(QPalette::Window)), kVisible);
  }
}

TEST_F(AccessTest, ADesktopThatTurnsDarkTakesTheControlAlong) {
  CreateAndShow();
  QPalette dark(QColor(0x2B, 0x2B, 0x2B));
  dark.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x1E));
  QApplication::setPalette(dark);
  QCoreApplication::processEvents();
  EXPECT_EQ(Find<QWidget>("txtTerm").palette().color(QPalette::Text), ui::Blue(dark));
  auto& label = Find<ui::PortLabelBox>("lbPort");
  EXPECT_EQ(label.palette().color(QPalette::WindowText), dark.color(QPalette::WindowText));
  label.SetForeColour(255);
  EXPECT_EQ(label.palette().color(QPalette::WindowText), ui::Red(dark));
}

TEST_F(AccessTest, PicturesAreDrawnAnewForEverySize) {
  for (const auto picture : {ui::Picture::kConnected, ui::Picture::kNotConnected, ui::Picture::kProperties,
                             ui::Picture::kServer}) {
    const QIcon icon = ui::PictureIcon(picture);
    for (const int side : {16, 20, 32, 256}) {
      const QImage image = icon.pixmap(side, side).toImage();
      ASSERT_EQ(image.width(), side);
      bool is_drawn = false;
      for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) is_drawn = is_drawn || image.pixelColor(x, y).alpha() > 100;
      }
      EXPECT_TRUE(is_drawn) << side;
    }
  }
}

TEST_F(AccessTest, TheControlFitsOnASmallForm) {
  CreateAndShow();
  const QSize smallest = control_->minimumSizeHint();
  EXPECT_LE(smallest.width(), 800);
  EXPECT_LE(smallest.height(), 560);
}

}  // namespace
}  // namespace korval::tests
