// SPDX-License-Identifier: MIT
// A host application with the ASAP3 server on its form. A client that connects gets the host's own session.
#include <memory>

#include <QApplication>
#include <QLabel>
#include <QVBoxLayout>
#include <QWidget>

#include "ThermometerSession.h"
#include "ui/KorvAsapServer.h"

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  QWidget form;
  form.setWindowTitle("Thermometer");
  auto* layout = new QVBoxLayout(&form);
  layout->addWidget(new QLabel("The server below answers with the temperature of this room."));
  auto* server = new korval::ui::KorvAsapServer(&form);
  layout->addWidget(server, 1);

  // The control uses a session that is handed over, never closes it, and lets it go when its client leaves;
  // the factory makes the sessions of the clients after that one.
  server->SetSession(std::make_shared<host_form::ThermometerSession>());
  server->SetSessionFactory([] { return std::make_shared<host_form::ThermometerSession>(); });

  form.resize(900, 640);
  form.show();
  return QApplication::exec();
}
