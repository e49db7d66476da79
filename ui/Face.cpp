// SPDX-License-Identifier: MIT
#include "ui/Face.h"

#include <QAction>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QStackedLayout>
#include <QToolBar>
#include <QVBoxLayout>

#include "ui/FindBar.h"

namespace korval::ui {
namespace {

constexpr int kButtonMargin = 16;  // beside a caption, which some styles leave none

QString WithKey(const QString& tool_tip, const QKeySequence& shortcut) {
  return tool_tip + " (" + shortcut.toString(QKeySequence::NativeText) + ")";
}

QWidget* Titled(const QString& title, QWidget* view) {
  auto* column = new QWidget;
  auto* rows = new QVBoxLayout(column);
  rows->setContentsMargins(0, 0, 0, 0);
  rows->setSpacing(3);
  auto* label = new QLabel(title);
  label->setBuddy(view);
  rows->addWidget(label);
  rows->addWidget(view, 1);
  return column;
}

void SetWidths(RowList& list, const std::initializer_list<int>& characters) {
  const int width = list.fontMetrics().averageCharWidth();
  int section = 0;
  for (const int count : characters) list.header()->resizeSection(section++, count * width + 16);
}

}  // namespace

Face::Face(QWidget* parent) : QWidget(parent) {
  auto* rows = new QVBoxLayout(this);
  rows->setContentsMargins(8, 4, 8, 4);
  rows->addWidget(Top());
  rows->addWidget(Middle(), 1);
  rows->addWidget(Bottom());
  panels_ = new StatusPanels;
  rows->addWidget(panels_);
  BindTerminalShortcuts();
  SetTabOrder();
  ShowConnected(false);
}

QWidget* Face::Top() {
  auto* top = new QWidget;
  // A name of its own would keep the text of a label from whoever listens to it.
  status_ = new QLabel;
  status_->setObjectName("lbStatus");
  status_->setAccessibleDescription(tr("Session"));
  QFont bold = status_->font();
  bold.setBold(true);
  status_->setFont(bold);
  remote_ = new QLabel;
  remote_->setObjectName("lbRemote");
  remote_->setAccessibleDescription(tr("Remote system"));
  for (auto* label : {status_, remote_}) label->setTextFormat(Qt::PlainText);
  // A client's name may be long; it must not widen the window.
  remote_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  auto* session = new QVBoxLayout;
  session->setSpacing(0);
  session->addStretch(1);
  session->addWidget(status_);
  session->addWidget(remote_);
  session->addStretch(1);

  port_ = new PortLabelBox;
  auto* interface_label = new QLabel(tr("Diagnostic interface:"));
  auto* row = new QHBoxLayout(top);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(8);
  row->addWidget(ToolBar());
  row->addSpacing(8);
  row->addLayout(session, 1);
  row->addWidget(interface_label);
  row->addWidget(port_);
  row->addSpacing(8);
  row->addWidget(Images());
  return top;
}

QToolBar* Face::ToolBar() {
  tool_bar_ = new QToolBar;
  tool_bar_->setObjectName("tbrToolBar");
  tool_bar_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  tool_bar_->setIconSize({20, 20});
  open_comm_ = AddAction("OpenComm", tr("Open port"), Qt::Key_F9, Picture::kNotConnected);
  properties_ = AddAction("Properties", tr("Properties..."), Qt::CTRL | Qt::Key_Comma, Picture::kProperties);
  // A tool button would drop the dots.
  properties_->setIconText(properties_->text());
  properties_->setToolTip(WithKey(tr("Serial port, TCP port and folders"), properties_->shortcut()));
  connect(open_comm_, &QAction::triggered, this, &Face::OpenCommClicked);
  connect(properties_, &QAction::triggered, this, &Face::PropertiesClicked);
  return tool_bar_;
}

QAction* Face::AddAction(const char* name, const QString& text, const QKeySequence& shortcut,
                         Picture picture) {
  QAction* action = tool_bar_->addAction(PictureIcon(picture), text);
  action->setObjectName(QString::fromLatin1(name));
  action->setShortcut(shortcut);
  action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
  addAction(action);
  tool_bar_->widgetForAction(action)->setFocusPolicy(Qt::TabFocus);
  return action;
}

QWidget* Face::Images() {
  auto* images = new QWidget;
  auto* stack = new QStackedLayout(images);
  connected_ = new StateImage("imgConnected", tr("Serial port open; toggles it"), Picture::kConnected);
  not_connected_ =
      new StateImage("imgNotConnected", tr("Serial port closed; toggles it"), Picture::kNotConnected);
  for (auto* image : {connected_, not_connected_}) {
    stack->addWidget(image);
    connect(image, &QAbstractButton::clicked, this, &Face::OpenCommClicked);
  }
  images->setFixedSize(connected_->sizeHint());
  return images;
}

QWidget* Face::Middle() {
  files_ = new RowList("LVfile", tr("Selected files"),
                       {tr("Id"), tr("File"), tr("parameters file"), tr("address"), tr("Function"),
                        tr("Protocol"), tr("Identification")});
  SetWidths(*files_, {4, 16, 16, 8, 12, 11, 30});
  data_ = new RowList("LVdata", tr("Acquired data"), {tr("Data"), tr("Ecu"), tr("Value"), tr("Korval name")});
  SetWidths(*data_, {18, 5, 14, 18});
  columns_ = new QSplitter(Qt::Horizontal);
  columns_->setChildrenCollapsible(false);
  columns_->addWidget(Titled(tr("Acquired data"), data_));
  columns_->addWidget(TerminalColumn());
  columns_->setStretchFactor(0, 2);
  columns_->setStretchFactor(1, 3);
  rows_ = new QSplitter(Qt::Vertical);
  rows_->setChildrenCollapsible(false);
  rows_->addWidget(Titled(tr("Selected files"), files_));
  rows_->addWidget(columns_);
  rows_->setStretchFactor(0, 1);
  rows_->setStretchFactor(1, 4);
  return rows_;
}

QWidget* Face::TerminalColumn() {
  terminal_ = new TerminalBox;
  QWidget* column = Titled(tr("Trace"), terminal_);
  find_bar_ = new FindBar(terminal_, nullptr);
  column->layout()->addWidget(find_bar_);
  connect(terminal_, &TerminalBox::FindAsked, find_bar_, &FindBar::Open);
  return column;
}

QWidget* Face::Bottom() {
  auto* bottom = new QWidget;
  auto* row = new QHBoxLayout(bottom);
  row->setContentsMargins(0, 0, 0, 0);
  reset_all_ = AddButton("ResetAll", tr("Reset All"), tr("Closes and reopens the ports and ends the session"),
                         Qt::CTRL | Qt::Key_R);
  read_data_ = AddButton("ReadData", tr("Read data"), tr("Reads the acquired data once"), Qt::Key_F5);
  read_ident_ = AddButton("ReadIdent", tr("Read Ecu Ident"),
                          tr("Reads the identification of every file's ECU"), Qt::Key_F6);
  show_value_ = AddCheck("showvalue", tr("Display Get Online value"),
                         tr("Shows the values that the client reads in the list"), Qt::Key_F7);
  check1_ = AddCheck("Check1", tr("Check && debug"), tr("Traces frames, values and errors too"), Qt::Key_F8);
  connect(reset_all_, &QPushButton::clicked, this, &Face::ResetAllClicked);
  connect(read_data_, &QPushButton::clicked, this, &Face::ReadDataClicked);
  connect(read_ident_, &QPushButton::clicked, this, &Face::ReadIdentClicked);
  connect(show_value_, &QCheckBox::toggled, this, &Face::ShowValueToggled);
  connect(check1_, &QCheckBox::toggled, this, &Face::DebugToggled);
  for (auto* button : {reset_all_, read_data_, read_ident_}) row->addWidget(button);
  row->addStretch(1);
  row->addWidget(show_value_);
  row->addSpacing(12);
  row->addWidget(check1_);
  return bottom;
}

QPushButton* Face::AddButton(const char* name, const QString& text, const QString& tool_tip,
                             const QKeySequence& shortcut) {
  auto* button = new QPushButton(text);
  button->setObjectName(QString::fromLatin1(name));
  button->setMinimumWidth(button->sizeHint().width() + kButtonMargin);
  BindShortcut(button, tool_tip, shortcut);
  return button;
}

QCheckBox* Face::AddCheck(const char* name, const QString& text, const QString& tool_tip,
                          const QKeySequence& shortcut) {
  auto* check = new QCheckBox(text);
  check->setObjectName(QString::fromLatin1(name));
  BindShortcut(check, tool_tip, shortcut);
  return check;
}

// The captions have no letters underlined, so each button has a key, which its tool tip names. It works
// inside the control only: the host's form has keys of its own.
void Face::BindShortcut(QAbstractButton* button, const QString& tool_tip, const QKeySequence& shortcut) {
  button->setToolTip(WithKey(tool_tip, shortcut));
  auto* key = new QShortcut(shortcut, this);
  key->setContext(Qt::WidgetWithChildrenShortcut);
  connect(key, &QShortcut::activated, button, [button] { button->click(); });
}

void Face::BindTerminalShortcuts() {
  const auto bind = [this](const QKeySequence& keys, const auto& act) {
    auto* key = new QShortcut(keys, this);
    key->setContext(Qt::WidgetWithChildrenShortcut);
    connect(key, &QShortcut::activated, this, act);
  };
  bind(QKeySequence::Find, [this] { find_bar_->Open(); });
  bind(Qt::Key_F3, [this] { find_bar_->FindNext(); });
  bind(Qt::SHIFT | Qt::Key_F3, [this] { find_bar_->FindPrevious(); });
  bind(QKeySequence::Save, [this] { terminal_->SaveAs(); });
}

void Face::SetTabOrder() {
  const QList<QWidget*> order{tool_bar_->widgetForAction(open_comm_),
                              tool_bar_->widgetForAction(properties_),
                              connected_,
                              not_connected_,
                              files_,
                              data_,
                              terminal_,
                              find_bar_,
                              reset_all_,
                              read_data_,
                              read_ident_,
                              show_value_,
                              check1_};
  for (qsizetype i = 1; i < order.size(); ++i) setTabOrder(order[i - 1], order[i]);
}

void Face::ShowSessionStatus(const QString& text) { status_->setText(text); }

void Face::ShowRemoteSystem(const QString& text) {
  remote_->setText(text);
  remote_->setToolTip(text);
  remote_->setVisible(!text.isEmpty());
}

void Face::ShowConnected(bool connected) {
  auto* stack = qobject_cast<QStackedLayout*>(connected_->parentWidget()->layout());
  stack->setCurrentWidget(connected ? connected_ : not_connected_);
  open_comm_->setText(connected ? tr("Close port") : tr("Open port"));
  open_comm_->setToolTip(WithKey(connected ? tr("Closes the serial port") : tr("Opens the serial port"),
                                 open_comm_->shortcut()));
  open_comm_->setIcon(PictureIcon(connected ? Picture::kConnected : Picture::kNotConnected));
}

void Face::SetActionsEnabled(bool enabled) {
  for (auto* action : {open_comm_, properties_}) action->setEnabled(enabled);
}

QString Face::Layout() const {
  return QString::fromLatin1(rows_->saveState().toBase64() + " " + columns_->saveState().toBase64());
}

void Face::SetLayout(const QString& text) {
  const QList<QByteArray> states = text.toLatin1().split(' ');
  if (states.size() != 2) return;
  rows_->restoreState(QByteArray::fromBase64(states[0]));
  columns_->restoreState(QByteArray::fromBase64(states[1]));
}

}  // namespace korval::ui
