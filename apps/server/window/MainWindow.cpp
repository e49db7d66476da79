// SPDX-License-Identifier: MIT
#include "window/MainWindow.h"

#include <utility>

#include <QAction>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QMenuBar>
#include <QMessageBox>

#include "base/Failure.h"
#include "ui/MessageBoxView.h"

namespace korval::apps {
namespace {

constexpr char kPlace[] = "KorvalAsapServer/View/Window";

}  // namespace

MainWindow::MainWindow(ui::KorvAsapServer* control, std::shared_ptr<host::SettingsStore> store,
                       const InterfaceMenu::Scan& scan)
    : control_(control), store_(std::move(store)) {
  setWindowTitle(tr("Korval Asap server"));
  setCentralWidget(control_);
  AddServerMenu();
  AddInterfaceMenu(scan);
  AddHelpMenu();
  RestorePlace();
}

void MainWindow::AddServerMenu() {
  QMenu* menu = menuBar()->addMenu(tr("&Server"));
  for (const char* name : {"OpenComm", "Properties"}) {
    menu->addAction(control_->findChild<QAction*>(QString::fromLatin1(name)));
  }
  menu->addSeparator();
  QAction* quit = menu->addAction(tr("&Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q), this, &QWidget::close);
  quit->setMenuRole(QAction::QuitRole);
}

void MainWindow::AddInterfaceMenu(const InterfaceMenu::Scan& scan) {
  auto* menu = new InterfaceMenu(store_, scan, this);
  menuBar()->addMenu(menu);
  connect(menu, &InterfaceMenu::Chosen, this, [this](const QString& text) {
    emit InterfaceChosen(text);
    control_->SelectDiagInterface();
  });
  // On the control, like the store's own message of that text: a person needs it once.
  connect(menu, &InterfaceMenu::NotStored, this, [this](const QString& reason) {
    ui::MessageBoxView(control_).Show(reason.toStdString(), host::MessageStyle::kExclamation);
  });
}

void MainWindow::AddHelpMenu() {
  QMenu* menu = menuBar()->addMenu(tr("&Help"));
  menu->addAction(tr("&About"), this, &MainWindow::ShowAbout)->setMenuRole(QAction::AboutRole);
}

void MainWindow::ShowAbout() {
  auto* box = new QMessageBox(QMessageBox::NoIcon, tr("About"),
                              tr("<b>Korval Asap server %1</b>").arg(QCoreApplication::applicationVersion()),
                              QMessageBox::Ok, this);
  box->setInformativeText(
      tr("Answers a test bench's ASAP3 requests over TCP and RS232 and drives vehicle ECUs."));
  box->setIconPixmap(windowIcon().pixmap(64, 64));
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setModal(false);
  box->show();
}

void MainWindow::RestorePlace() {
  resize(1080, 720);
  const auto place = store_->Read(kPlace);
  if (place) restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(*place)));
}

void MainWindow::KeepPlace() {
  const std::string place = saveGeometry().toBase64().toStdString();
  if (store_->Read(kPlace) == place) return;
  try {
    store_->Write(kPlace, place);
  } catch (const base::Failure&) {
    // A place that is lost is no reason to keep anybody from closing the window.
  }
}

// The control goes first: a command that waits for an ECU is what would keep the application running.
void MainWindow::closeEvent(QCloseEvent* event) {
  KeepPlace();
  delete std::exchange(control_, nullptr);
  QMainWindow::closeEvent(event);
  QCoreApplication::exit();
}

}  // namespace korval::apps
