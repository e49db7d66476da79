// SPDX-License-Identifier: MIT
#include <memory>

#include <QInputDialog>
#include <QMainWindow>
#include <gmock/gmock.h>

#include "WidgetTest.h"
#include "tests/support/MemorySettings.h"
#include "window/InterfaceMenu.h"

namespace korval::apps {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kPort[] = "QOR/General/CommPort";
constexpr char kInstance[] = "QOR/Hardware/InstanceName";

class InterfaceMenuTest : public tests::WidgetTest {
 protected:
  InterfaceMenuTest() {
    QObject::connect(&menu_, &InterfaceMenu::Chosen,
                     [this](const QString& text) { chosen_.push_back(text.toStdString()); });
    QObject::connect(&menu_, &InterfaceMenu::NotStored,
                     [this](const QString& reason) { not_stored_.push_back(reason.toStdString()); });
  }

  void Open() { emit menu_.aboutToShow(); }
  std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (const QAction* action : menu_.actions()) {
      if (!action->isSeparator()) texts.push_back(action->text().toStdString());
    }
    return texts;
  }
  std::vector<std::string> Ticked() const {
    std::vector<std::string> texts;
    for (const QAction* action : menu_.actions()) {
      if (action->isChecked()) texts.push_back(action->text().toStdString());
    }
    return texts;
  }
  void Click(const char* text) {
    for (QAction* action : menu_.actions()) {
      if (action->text() == QString::fromUtf8(text)) return action->trigger();
    }
    FAIL() << "no entry " << text;
  }
  std::string Stored(const char* path) const { return store_->Read(path).value_or("(absent)"); }

  std::shared_ptr<tests::MemorySettings> store_ = std::make_shared<tests::MemorySettings>();
  std::vector<platform::PluggedInterface> plugged_{{"/dev/ttyUSB0", "K-line & CAN adapter", "KD-1"},
                                                   {"CAN:socketcan:can0", "", ""}};
  std::vector<std::string> chosen_;
  std::vector<std::string> not_stored_;
  QMainWindow window_;
  InterfaceMenu menu_{store_, [this] { return plugged_; }, &window_};
};

TEST_F(InterfaceMenuTest, OffersTheSimulatedEcuEveryPortAndEverySerialNumber) {
  Open();
  EXPECT_THAT(Texts(),
              ElementsAre("Simulated ECU (SIM)", "/dev/ttyUSB0 - K-line && CAN adapter", "CAN:socketcan:can0",
                          "USB KD-1 - K-line && CAN adapter", "&Other port..."));
}

TEST_F(InterfaceMenuTest, LooksAtWhatIsPluggedInWheneverItOpens) {
  Open();
  plugged_.clear();
  Open();
  EXPECT_THAT(Texts(), ElementsAre("Simulated ECU (SIM)", "&Other port..."));
}

TEST_F(InterfaceMenuTest, TicksTheStoredPort) {
  store_->user[kPort] = "CAN:socketcan:can0";
  Open();
  EXPECT_THAT(Ticked(), ElementsAre("CAN:socketcan:can0"));
}

TEST_F(InterfaceMenuTest, TicksTheStoredUsbInterfaceByItsSerialNumber) {
  store_->user[kPort] = "NONE";
  store_->user[kInstance] = "KD-1";
  Open();
  EXPECT_THAT(Ticked(), ElementsAre("USB KD-1 - K-line && CAN adapter"));
}

TEST_F(InterfaceMenuTest, ShowsAStoredChoiceThatIsNotPluggedIn) {
  store_->user[kPort] = "NONE";
  store_->user[kInstance] = "KD-9";
  Open();
  EXPECT_THAT(Ticked(), ElementsAre("NONE KD-9 (not plugged in)"));
}

TEST_F(InterfaceMenuTest, TicksNothingWhenNothingIsStored) {
  Open();
  EXPECT_THAT(Ticked(), IsEmpty());
}

TEST_F(InterfaceMenuTest, StoresAPort) {
  store_->user[kInstance] = "KD-1";
  Open();
  Click("CAN:socketcan:can0");
  EXPECT_EQ(Stored(kPort), "CAN:socketcan:can0");
  EXPECT_EQ(Stored(kInstance), "KD-1");
  EXPECT_THAT(chosen_, ElementsAre("CAN:socketcan:can0"));
}

TEST_F(InterfaceMenuTest, StoresAUsbInterfaceAsNoneAndItsSerialNumber) {
  Open();
  Click("USB KD-1 - K-line && CAN adapter");
  EXPECT_EQ(Stored(kPort), "NONE");
  EXPECT_EQ(Stored(kInstance), "KD-1");
  EXPECT_THAT(chosen_, ElementsAre("USB KD-1 - K-line & CAN adapter"));
}

TEST_F(InterfaceMenuTest, AStoreThatCannotBeWrittenIsToldInsteadOfAChoice) {
  store_->user[kPort] = "SIM";
  store_->read_only = true;
  Open();
  Click("CAN:socketcan:can0");
  EXPECT_EQ(Stored(kPort), "SIM");
  EXPECT_THAT(chosen_, IsEmpty());
  EXPECT_THAT(not_stored_, ElementsAre("the settings cannot be written"));
}

TEST_F(InterfaceMenuTest, ASerialNumberThatCannotBeStoredLeavesThePortToo) {
  store_->user[kPort] = "SIM";
  store_->refused = {kInstance};
  Open();
  Click("USB KD-1 - K-line && CAN adapter");
  EXPECT_EQ(Stored(kPort), "SIM");
  EXPECT_THAT(chosen_, IsEmpty());
}

TEST_F(InterfaceMenuTest, AnotherPortIsTypedIntoADialogThatBlocksNothing) {
  store_->user[kPort] = "SIM";
  Open();
  Click("&Other port...");
  auto* dialog = window_.findChild<QInputDialog*>();
  ASSERT_NE(dialog, nullptr);
  EXPECT_FALSE(dialog->isModal());
  EXPECT_EQ(dialog->textValue(), "SIM");
  dialog->setTextValue("  CAN:virtualcan:can3 ");
  dialog->accept();
  EXPECT_EQ(Stored(kPort), "CAN:virtualcan:can3");
  EXPECT_THAT(chosen_, ElementsAre("CAN:virtualcan:can3"));
}

TEST_F(InterfaceMenuTest, ADialogLeftEmptyChangesNothing) {
  store_->user[kPort] = "SIM";
  Open();
  Click("&Other port...");
  auto* dialog = window_.findChild<QInputDialog*>();
  ASSERT_NE(dialog, nullptr);
  dialog->setTextValue("  ");
  dialog->accept();
  EXPECT_EQ(Stored(kPort), "SIM");
  EXPECT_THAT(chosen_, IsEmpty());
}

}  // namespace
}  // namespace korval::apps
