// SPDX-License-Identifier: MIT
#include "ui/PanelFace.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace korval::ui {
namespace {

constexpr int kPorts = 16;
constexpr int kParityNone = 2;

QComboBox* List(const char* name, const QString& accessible_name) {
  auto* list = new QComboBox;
  list->setObjectName(QString::fromLatin1(name));
  list->setAccessibleName(accessible_name);
  return list;
}

QLineEdit* Field(const char* name, const QString& accessible_name, const QString& tool_tip) {
  auto* field = new QLineEdit;
  field->setObjectName(QString::fromLatin1(name));
  field->setAccessibleName(accessible_name);
  field->setToolTip(tool_tip);
  return field;
}

QGroupBox* Frame(const char* name, const QString& title) {
  auto* frame = new QGroupBox(title);
  frame->setObjectName(QString::fromLatin1(name));
  return frame;
}

QLabel* Label(const QString& text, QWidget* buddy, const char* name = "") {
  auto* label = new QLabel(text);
  label->setObjectName(QString::fromLatin1(name));
  label->setBuddy(buddy);
  return label;
}

void Fill(QComboBox& list, const QStringList& texts) {
  list.clear();
  list.addItems(texts);
}

// A text that the list does not offer leaves it as it is.
void Show(QComboBox& list, const std::string& text) {
  const int position = list.findText(QString::fromStdString(text));
  if (position >= 0) list.setCurrentIndex(position);
}

std::string Text(const QComboBox& list) { return list.currentText().toStdString(); }

}  // namespace

PanelFace::PanelFace(QWidget& panel) {
  auto* page = new QWidget;
  auto* serial = new QVBoxLayout;
  serial->addWidget(ComFrame());
  serial->addWidget(TcpFrame());
  serial->addStretch(1);
  asap_ = new FolderPicker("Asap", QObject::tr("FOLDER for Korval to Asap configuration files"));
  korv_ = new FolderPicker("Korv", QObject::tr("Folder for Korval ECU files"));
  auto* folders = new QVBoxLayout;
  folders->addWidget(asap_, 1);
  folders->addWidget(korv_, 1);
  auto* columns = new QHBoxLayout(page);
  columns->addLayout(serial);
  columns->addLayout(folders, 1);

  auto* tab = new QTabWidget;
  tab->setObjectName("tabSettings");
  tab->addTab(page, QObject::tr("Properties"));
  auto* rows = new QVBoxLayout(&panel);
  rows->addWidget(tab, 1);
  rows->addWidget(Buttons());
  LoadLists();
}

QWidget* PanelFace::ComFrame() {
  auto* frame = Frame("FrCom", QObject::tr("Communication Port Settings"));
  port_ = List("cboPort", QObject::tr("Port"));
  open_at_start_ = new QCheckBox(QObject::tr("Open when server start"));
  open_at_start_->setObjectName("ck_opencom");
  auto* port_row = new QFormLayout;
  port_row->addRow(Label(QObject::tr("Port:"), port_, "Label1"), port_);
  auto* rows = new QVBoxLayout(frame);
  rows->addLayout(port_row);
  rows->addWidget(SpeedFrame());
  rows->addWidget(ConnectionFrame());
  rows->addWidget(FlowFrame());
  rows->addWidget(open_at_start_);
  return frame;
}

QWidget* PanelFace::SpeedFrame() {
  auto* frame = Frame("Frame1", QObject::tr("Maximum Speed"));
  speed_ = List("cboSpeed", QObject::tr("Maximum Speed"));
  (new QVBoxLayout(frame))->addWidget(speed_);
  return frame;
}

QWidget* PanelFace::ConnectionFrame() {
  auto* frame = Frame("fraConnection", QObject::tr("Connection Preferences"));
  data_bits_ = List("cboDataBits", QObject::tr("Data Bits"));
  parity_ = List("cboParity", QObject::tr("Parity"));
  stop_bits_ = List("cboStopBits", QObject::tr("Stop Bits"));
  auto* rows = new QFormLayout(frame);
  rows->addRow(Label(QObject::tr("Data Bits:"), data_bits_), data_bits_);
  rows->addRow(Label(QObject::tr("Parity:"), parity_), parity_);
  rows->addRow(Label(QObject::tr("Stop Bits:"), stop_bits_), stop_bits_);
  return frame;
}

QWidget* PanelFace::FlowFrame() {
  auto* frame = Frame("Frame5", QObject::tr("&Flow Control"));
  flow_ = new QButtonGroup(frame);
  auto* grid = new QGridLayout(frame);
  const QStringList captions{QObject::tr("None"), QObject::tr("Xon/Xoff"), QObject::tr("RTS"),
                             QObject::tr("Xon/RTS")};
  for (int code = 0; code < captions.size(); ++code) {
    auto* option = new QRadioButton(captions[code]);
    option->setObjectName("optFlow" + QString::number(code));
    flow_->addButton(option, code);
    grid->addWidget(option, code / 2, code % 2);
  }
  flow_->button(0)->setChecked(true);
  return frame;
}

QWidget* PanelFace::TcpFrame() {
  auto* frame = Frame("Frame2", QObject::tr("TCPIP"));
  tcp_port_ = Field("txportip", QObject::tr("TCP port number"), QObject::tr("1 to 65535"));
  tcp_port_->setText("1001");
  listen_ = Field("txlisten", QObject::tr("Listen on"),
                  QObject::tr("An IP address of this computer; empty: all of them"));
  listen_->setPlaceholderText(QObject::tr("all addresses"));
  allow_ = Field("txallow", QObject::tr("Allowed clients"),
                 QObject::tr("IP addresses and networks with commas between them, as in 192.168.4.0/24, "
                             "127.0.0.1; empty: every client"));
  allow_->setPlaceholderText(QObject::tr("every client"));
  auto* rows = new QFormLayout(frame);
  rows->addRow(Label(QObject::tr("Port number"), tcp_port_, "Label2"), tcp_port_);
  rows->addRow(Label(QObject::tr("Listen on"), listen_), listen_);
  rows->addRow(Label(QObject::tr("Allowed clients"), allow_), allow_);
  return frame;
}

QWidget* PanelFace::Buttons() {
  auto* row_widget = new QWidget;
  ok_ = new QPushButton(QObject::tr("OK"));
  ok_->setObjectName("cmdOK");
  cancel_ = new QPushButton(QObject::tr("Cancel"));
  cancel_->setObjectName("cmdCancel");
  // The enter key presses the one that has the focus.
  for (auto* button : {ok_, cancel_}) button->setAutoDefault(true);
  auto* row = new QHBoxLayout(row_widget);
  row->setContentsMargins(0, 0, 0, 0);
  row->addStretch(1);
  row->addWidget(ok_);
  row->addWidget(cancel_);
  return row_widget;
}

void PanelFace::LoadLists() {
  QStringList ports;
  for (int number = 1; number <= kPorts; ++number) ports.append("Com" + QString::number(number));
  Fill(*port_, ports);
  Fill(*speed_, {"110", "300", "600", "1200", "2400", "4800", "9600", "14400", "19200", "28800", "38400",
                 "56000", "57600", "115200", "128000", "256000"});
  Fill(*data_bits_, {"4", "5", "6", "7", "8"});
  Fill(*parity_, {"Even", "Odd", "None", "Mark", "Space"});
  Fill(*stop_bits_, {"1", "1.5", "2"});
  // What a line has unless somebody chose otherwise: an upper-case parity letter selects nothing.
  Show(*speed_, "9600");
  Show(*data_bits_, "8");
  parity_->setCurrentIndex(kParityNone);
}

void PanelFace::ShowAsapFolder(const std::string& path) { asap_->Load(QString::fromStdString(path)); }
void PanelFace::ShowKorvFolder(const std::string& path) { korv_->Load(QString::fromStdString(path)); }
std::string PanelFace::AsapDirPath() const { return asap_->Path().toStdString(); }
std::string PanelFace::KorvDirPath() const { return korv_->Path().toStdString(); }

void PanelFace::ShowTcpPort(const std::string& text) { tcp_port_->setText(QString::fromStdString(text)); }
std::string PanelFace::TcpPort() const { return tcp_port_->text().toStdString(); }
void PanelFace::ShowListen(const std::string& text) { listen_->setText(QString::fromStdString(text)); }
std::string PanelFace::Listen() const { return listen_->text().toStdString(); }
void PanelFace::ShowAllow(const std::string& text) { allow_->setText(QString::fromStdString(text)); }
std::string PanelFace::Allow() const { return allow_->text().toStdString(); }

// The line may run at a speed that the list does not offer; it joins the list.
void PanelFace::ShowSpeed(const std::string& text) {
  const QString speed = QString::fromStdString(text);
  bool is_number = false;
  if (speed.toUInt(&is_number) > 0 && is_number && speed_->findText(speed) < 0) speed_->addItem(speed);
  Show(*speed_, text);
}
std::string PanelFace::Speed() const { return Text(*speed_); }

void PanelFace::SelectParity(int position) { parity_->setCurrentIndex(position); }
std::string PanelFace::Parity() const { return Text(*parity_); }
void PanelFace::ShowDataBits(const std::string& text) { Show(*data_bits_, text); }
std::string PanelFace::DataBits() const { return Text(*data_bits_); }
void PanelFace::ShowStopBits(const std::string& text) { Show(*stop_bits_, text); }
std::string PanelFace::StopBits() const { return Text(*stop_bits_); }

// A port beyond the list joins it too, with those before it.
void PanelFace::SelectPort(std::int32_t position) {
  for (int number = port_->count() + 1; number <= position + 1 && number <= 256; ++number) {
    port_->addItem("Com" + QString::number(number));
  }
  port_->setCurrentIndex(position);
}
std::int32_t PanelFace::SelectedPort() const { return port_->currentIndex(); }

void PanelFace::SelectFlow(std::int32_t index) {
  if (auto* option = flow_->button(index)) option->setChecked(true);
}
std::int32_t PanelFace::SelectedFlow() const { return flow_->checkedId(); }

void PanelFace::ShowOpenAtStart(bool on) { open_at_start_->setChecked(on); }
bool PanelFace::OpenAtStart() const { return open_at_start_->isChecked(); }

}  // namespace korval::ui
