// SPDX-License-Identifier: MIT
#include "tests/ui/designer/Form.h"

#include <QDir>
#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>

namespace korval::tests {

std::uint16_t StoreFreePort() {
  QTcpServer server;
  server.listen(QHostAddress::LocalHost);
  const std::uint16_t port = server.serverPort();
  const QDir folder(qEnvironmentVariable("XDG_CONFIG_HOME"));
  folder.mkpath("Korval");
  QFile file(folder.filePath("Korval/Korval.ini"));
  if (!file.open(QIODevice::WriteOnly)) return 0;
  file.write("[KorvalAsapServer]\nProperties\\tcpipPort=" + QByteArray::number(port) + "\n");
  return port;
}

bool IsOpen(std::uint16_t port) {
  QTcpSocket client;
  client.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
  return client.waitForConnected(5000);
}

}  // namespace korval::tests
