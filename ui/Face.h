// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

#include <QString>
#include <QWidget>

#include "ui/PortLabelBox.h"
#include "ui/RowList.h"
#include "ui/StateImage.h"
#include "ui/StatusPanels.h"
#include "ui/TerminalBox.h"

class QAction;
class QCheckBox;
class QLabel;
class QPushButton;
class QSplitter;
class QToolBar;

namespace korval::ui {

class FindBar;

/// The control's face: what a person at the console sees and clicks.
class Face : public QWidget {
  Q_OBJECT

 public:
  explicit Face(QWidget* parent = nullptr);

  TerminalBox& Terminal() { return *terminal_; }
  RowList& Files() { return *files_; }
  RowList& Data() { return *data_; }
  PortLabelBox& Port() { return *port_; }
  StatusPanels& Panels() { return *panels_; }

  void ShowSessionStatus(const QString& text);
  void ShowRemoteSystem(const QString& text);
  /// Brings one of the two images to the front.
  void ShowConnected(bool connected);
  /// The tool bar's actions, which a form's menu may repeat: such a menu stays in sight when the face does
  /// not.
  void SetActionsEnabled(bool enabled);

  /// How the person has arranged the face, as text, and back. A text that is none changes nothing.
  QString Layout() const;
  void SetLayout(const QString& text);

 signals:
  void OpenCommClicked();
  void PropertiesClicked();
  void ResetAllClicked();
  void ReadDataClicked();
  void ReadIdentClicked();
  void ShowValueToggled(bool on);
  void DebugToggled(bool on);

 private:
  QWidget* Top();
  QToolBar* ToolBar();
  QWidget* Images();
  QWidget* Middle();
  QWidget* TerminalColumn();
  QWidget* Bottom();
  QAction* AddAction(const char* name, const QString& text, const QKeySequence& shortcut, Picture picture);
  QPushButton* AddButton(const char* name, const QString& text, const QString& tool_tip,
                         const QKeySequence& shortcut);
  QCheckBox* AddCheck(const char* name, const QString& text, const QString& tool_tip,
                      const QKeySequence& shortcut);
  void BindShortcut(QAbstractButton* button, const QString& tool_tip, const QKeySequence& shortcut);
  void BindTerminalShortcuts();
  void SetTabOrder();

  QToolBar* tool_bar_ = nullptr;
  QAction* open_comm_ = nullptr;
  QAction* properties_ = nullptr;
  QLabel* status_ = nullptr;
  QLabel* remote_ = nullptr;
  PortLabelBox* port_ = nullptr;
  StateImage* connected_ = nullptr;
  StateImage* not_connected_ = nullptr;
  QSplitter* rows_ = nullptr;
  QSplitter* columns_ = nullptr;
  RowList* files_ = nullptr;
  RowList* data_ = nullptr;
  TerminalBox* terminal_ = nullptr;
  FindBar* find_bar_ = nullptr;
  QPushButton* reset_all_ = nullptr;
  QPushButton* read_data_ = nullptr;
  QPushButton* read_ident_ = nullptr;
  QCheckBox* show_value_ = nullptr;
  QCheckBox* check1_ = nullptr;
  StatusPanels* panels_ = nullptr;
};

}  // namespace korval::ui
