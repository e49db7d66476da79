// SPDX-License-Identifier: MIT
#include "ui/KorvAsapServer.h"

#include <utility>

#include <QPointer>
#include <QScrollArea>
#include <QShowEvent>
#include <QStackedLayout>

#include "base/Failure.h"
#include "host/control/ServerControl.h"
#include "host/settings/ServerSettings.h"
#include "ui/ConfigComPort.h"
#include "ui/Face.h"
#include "ui/MessageBoxView.h"
#include "ui/PanelView.h"
#include "ui/RowListView.h"
#include "ui/StatusFace.h"
#include "ui/TerminalView.h"
#include "ui/UsualParts.h"

namespace korval::ui {
namespace {

std::string ViewPath(const char* name) { return std::string("KorvalAsapServer/View/") + name; }

}  // namespace

class KorvAsapServer::Private {
 public:
  explicit Private(KorvAsapServer& owner) : face_(new Face), stack_(new QStackedLayout(&owner)) {
    stack_->addWidget(face_);
  }

  void Start(KorvAsapServer& owner, const Assemble& assemble);
  void AddPanel(ConfigComPort* panel);
  void ShowOnce(KorvAsapServer& owner);
  void End();

  const std::shared_ptr<host::ServerControl>& Control() const { return control_; }
  void SetSessionFactory(SessionFactory factory) { *factory_ = std::move(factory); }

 private:
  host::ControlParts Views(KorvAsapServer& owner) const;
  void Show(KorvAsapServer& owner);
  void Connect(KorvAsapServer& owner, ConfigComPort* panel);
  void RestoreView();
  void KeepView();

  Face* face_;
  QStackedLayout* stack_;
  std::shared_ptr<SessionFactory> factory_ = std::make_shared<SessionFactory>();
  std::shared_ptr<host::MessageBox> message_box_;
  std::shared_ptr<host::SettingsStore> settings_;
  std::shared_ptr<host::ServerControl> control_;  // null in the form designer
  bool was_shown_ = false;
};

void KorvAsapServer::Private::Start(KorvAsapServer& owner, const Assemble& assemble) {
  host::ControlParts parts = assemble(Views(owner));
  message_box_ = parts.message_box;
  settings_ = parts.settings;
  auto* panel = new ConfigComPort(settings_, message_box_, nullptr);
  AddPanel(panel);
  parts.panel = std::make_shared<PanelView>(stack_, face_, panel);
  parts.create_session = [factory = factory_, usual = parts.create_session] {
    return *factory ? (*factory)() : usual();
  };
  control_ = host::ServerControl::Create(std::move(parts));
  Connect(owner, panel);
  RestoreView();
  control_->Initialise();
}

host::ControlParts KorvAsapServer::Private::Views(KorvAsapServer& owner) const {
  host::ControlParts views;
  views.terminal = std::make_shared<TerminalView>(&face_->Terminal());
  views.status = std::make_shared<StatusFace>(face_);
  views.files = std::make_shared<RowListView>(&face_->Files());
  views.data = std::make_shared<RowListView>(&face_->Data());
  views.message_box = std::make_shared<MessageBoxView>(&owner);
  views.port_label = std::make_shared<PortLabelView>(&face_->Port());
  return views;
}

// The panel stands in front of the face while the settings are edited, and can be scrolled where the form
// is small.
void KorvAsapServer::Private::AddPanel(ConfigComPort* panel) {
  panel->setObjectName("ConfigComPort1");
  auto* area = new QScrollArea;
  area->setFrameShape(QFrame::NoFrame);
  area->setWidgetResizable(true);
  area->setWidget(panel);
  stack_->addWidget(area);
}

// Each connection holds the control: what it calls may wait, and the widget be deleted meanwhile.
void KorvAsapServer::Private::Connect(KorvAsapServer& owner, ConfigComPort* panel) {
  const auto control = control_;
  const auto on_click = [&](void (Face::*clicked)(), void (host::ServerControl::*act)()) {
    QObject::connect(face_, clicked, &owner, [control, act] { (control.get()->*act)(); });
  };
  on_click(&Face::OpenCommClicked, &host::ServerControl::ToggleSerialPort);
  on_click(&Face::PropertiesClicked, &host::ServerControl::EditProperties);
  on_click(&Face::ResetAllClicked, &host::ServerControl::ResetAll);
  on_click(&Face::ReadDataClicked, &host::ServerControl::ReadData);
  on_click(&Face::ReadIdentClicked, &host::ServerControl::ReadIdent);
  QObject::connect(face_, &Face::ShowValueToggled, &owner, [control](bool on) { control->SetShowValue(on); });
  QObject::connect(face_, &Face::DebugToggled, &owner,
                   [control](bool on) { control->Console().SetDebugTrace(on); });
  QObject::connect(panel, &ConfigComPort::ValueChanged, &owner,
                   [control](const bool& cancelled) { control->TakePanelResult(cancelled); });
}

void KorvAsapServer::Private::ShowOnce(KorvAsapServer& owner) {
  if (!control_ || std::exchange(was_shown_, true)) return;
  QMetaObject::invokeMethod(
      &owner, [this, &owner] { Show(owner); }, Qt::QueuedConnection);
}

// What is shown may wait, and the widget be deleted meanwhile.
void KorvAsapServer::Private::Show(KorvAsapServer& owner) {
  const QPointer<KorvAsapServer> alive(&owner);
  const auto control = control_;
  const auto message_box = message_box_;
  try {
    control->Show();
  } catch (const base::Failure& failure) {
    control->Console().Line("Init WinSock error : " + failure.Description());
    message_box->Show(failure.Description(), host::MessageStyle::kExclamation);
    if (alive) emit alive->ShowFailed(QString::fromStdString(failure.Description()));
  }
}

void KorvAsapServer::Private::End() {
  if (!control_) return;
  if (was_shown_) KeepView();
  control_->Terminate();
}

void KorvAsapServer::Private::RestoreView() {
  const auto read = [this](const char* name) {
    return QString::fromStdString(settings_->Read(ViewPath(name)).value_or(""));
  };
  face_->Files().SetColumns(read("LVfile"));
  face_->Data().SetColumns(read("LVdata"));
  face_->SetLayout(read("Layout"));
}

void KorvAsapServer::Private::KeepView() {
  const auto write = [this](const char* name, const QString& text) {
    const std::string value = text.toStdString();
    if (settings_->Read(ViewPath(name)) != value) settings_->Write(ViewPath(name), value);
  };
  try {
    write("LVfile", face_->Files().Columns());
    write("LVdata", face_->Data().Columns());
    write("Layout", face_->Layout());
  } catch (const base::Failure&) {
    // Widths that are lost are no reason to disturb anybody at the end.
  }
}

KorvAsapServer::KorvAsapServer(QWidget* parent) : KorvAsapServer(CompleteWithUsualParts, parent) {}

KorvAsapServer::KorvAsapServer(const Assemble& assemble, QWidget* parent)
    : QWidget(parent), d_(std::make_unique<Private>(*this)) {
  d_->Start(*this, assemble);
}

KorvAsapServer::KorvAsapServer(DesignerTag, QWidget* parent)
    : QWidget(parent), d_(std::make_unique<Private>(*this)) {
  d_->AddPanel(ConfigComPort::ForDesigner(nullptr));
}

KorvAsapServer::~KorvAsapServer() { d_->End(); }

KorvAsapServer* KorvAsapServer::ForDesigner(QWidget* parent) {
  return new KorvAsapServer(DesignerTag(), parent);
}

std::shared_ptr<viator3::Session> KorvAsapServer::Session() const {
  return d_->Control() ? d_->Control()->Session() : nullptr;
}

void KorvAsapServer::SetSession(std::shared_ptr<viator3::Session> session) {
  if (d_->Control()) d_->Control()->SetSession(std::move(session));
}

void KorvAsapServer::SetSession(std::shared_ptr<hosted::Session> session) {
  if (d_->Control()) SetSession(hosted::Awaitable(std::move(session), d_->Control()->Loop()));
}

void KorvAsapServer::SetSessionFactory(SessionFactory factory) { d_->SetSessionFactory(std::move(factory)); }

void KorvAsapServer::SetSessionFactory(HostSessionFactory factory) {
  if (!d_->Control()) return;
  d_->SetSessionFactory([factory = std::move(factory), loop = d_->Control()->Loop()] {
    return hosted::Awaitable(factory(), loop);
  });
}

QVariant KorvAsapServer::QORGetInstallationInformation() {
  if (d_->Control()) d_->Control()->QORGetInstallationInformation();
  return {};
}

void KorvAsapServer::SelectDiagInterface() {
  if (const auto control = d_->Control()) control->SelectDiagInterface();
}

void KorvAsapServer::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  d_->ShowOnce(*this);
}

}  // namespace korval::ui
