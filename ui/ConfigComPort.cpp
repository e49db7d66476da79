// SPDX-License-Identifier: MIT
#include "ui/ConfigComPort.h"

#include <utility>

#include <QKeyEvent>
#include <QPushButton>

#include "host/control/ConfigPanelLogic.h"
#include "platform/QSettingsStore.h"
#include "platform/TcpAccess.h"
#include "ui/MessageBoxView.h"
#include "ui/PanelFace.h"

namespace korval::ui {
namespace {

std::shared_ptr<host::SettingsStore> UsualStore(const std::shared_ptr<host::MessageBox>& box) {
  return std::make_shared<platform::QSettingsStore>(QString(), QString(), [box](const std::string& text) {
    box->Show(text, host::MessageStyle::kExclamation);
  });
}

// What a panel in the form designer keeps its settings in: nothing.
class NoStore : public host::SettingsStore {
 public:
  std::optional<std::string> Read(const std::string&) const override { return std::nullopt; }
  void Write(const std::string&, const std::string&) override {}
  std::optional<std::string> ReadMachineWide(const std::string&) const override { return std::nullopt; }
};

}  // namespace

class ConfigComPort::Private {
 public:
  Private(ConfigComPort& panel, std::shared_ptr<host::SettingsStore> panel_store,
          std::shared_ptr<host::MessageBox> panel_box)
      : store(std::move(panel_store)),
        box(std::move(panel_box)),
        face(panel),
        logic(face, *store, *box, platform::ReadTcpAccess,
              [&panel](bool cancelled) { panel.RaiseValueChanged(cancelled); }) {}

  std::shared_ptr<host::SettingsStore> store;
  std::shared_ptr<host::MessageBox> box;
  PanelFace face;
  host::ConfigPanelLogic logic;
};

ConfigComPort::ConfigComPort(QWidget* parent) : QWidget(parent) {
  const auto box = std::make_shared<MessageBoxView>(this);
  d_ = std::make_shared<Private>(*this, UsualStore(box), box);
  Connect();
}

ConfigComPort::ConfigComPort(std::shared_ptr<host::SettingsStore> store,
                             std::shared_ptr<host::MessageBox> message_box, QWidget* parent)
    : QWidget(parent), d_(std::make_shared<Private>(*this, std::move(store), std::move(message_box))) {
  Connect();
}

ConfigComPort* ConfigComPort::ForDesigner(QWidget* parent) {
  return new ConfigComPort(std::make_shared<NoStore>(), std::make_shared<MessageBoxView>(nullptr), parent);
}

ConfigComPort::~ConfigComPort() = default;

void ConfigComPort::Connect() {
  connect(&d_->face.Ok(), &QPushButton::clicked, this, [this] {
    const auto held = d_;
    held->logic.Ok();
  });
  connect(&d_->face.Cancel(), &QPushButton::clicked, this, [this] {
    const auto held = d_;
    held->logic.Cancel();
  });
}

void ConfigComPort::RaiseValueChanged(bool cancelled) { emit ValueChanged(cancelled); }

void ConfigComPort::LoadPropertySettings() { d_->face.LoadLists(); }

void ConfigComPort::SetValue(const QString& setting, int comm_port, int handshaking, int com_auto_open,
                             int tcp_ip_port, const QString& asap_folder, const QString& korv_folder) {
  host::PanelValues values = Values();
  values.setting = setting.toStdString();
  values.comm_port = comm_port;
  values.handshaking = handshaking;
  values.com_auto_open = com_auto_open != 0;
  values.tcp_ip_port = tcp_ip_port;
  values.asap_folder = asap_folder.toStdString();
  values.korv_folder = korv_folder.toStdString();
  Load(values);
}

void ConfigComPort::Load(const host::PanelValues& values) { d_->logic.SetValue(values); }
host::PanelValues ConfigComPort::Values() const { return d_->logic.Values(); }

template <typename Change>
void ConfigComPort::Set(Change change) {
  host::PanelValues values = d_->logic.Values();
  change(values);
  d_->logic.SetValues(values);
}

QString ConfigComPort::AsapFolder() const { return QString::fromStdString(Values().asap_folder); }
QString ConfigComPort::KorvFolder() const { return QString::fromStdString(Values().korv_folder); }
QString ConfigComPort::Setting() const { return QString::fromStdString(Values().setting); }
int ConfigComPort::CommPort() const { return Values().comm_port; }
int ConfigComPort::Handshaking() const { return Values().handshaking; }
int ConfigComPort::TcpIpPort() const { return Values().tcp_ip_port; }
int ConfigComPort::ComAutoOpen() const { return Values().com_auto_open ? -1 : 0; }

void ConfigComPort::SetAsapFolder(const QString& path) {
  Set([&](host::PanelValues& values) { values.asap_folder = path.toStdString(); });
}
void ConfigComPort::SetKorvFolder(const QString& path) {
  Set([&](host::PanelValues& values) { values.korv_folder = path.toStdString(); });
}
void ConfigComPort::SetSetting(const QString& setting) {
  Set([&](host::PanelValues& values) { values.setting = setting.toStdString(); });
}
void ConfigComPort::SetCommPort(int number) {
  Set([&](host::PanelValues& values) { values.comm_port = number; });
}
void ConfigComPort::SetHandshaking(int code) {
  Set([&](host::PanelValues& values) { values.handshaking = code; });
}
void ConfigComPort::SetTcpIpPort(int port) {
  Set([&](host::PanelValues& values) { values.tcp_ip_port = port; });
}
void ConfigComPort::SetComAutoOpen(int on) {
  Set([&](host::PanelValues& values) { values.com_auto_open = on != 0; });
}

void ConfigComPort::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) {
    d_->face.Cancel().click();
  } else {
    QWidget::keyPressEvent(event);
  }
}

}  // namespace korval::ui
