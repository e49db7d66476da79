// SPDX-License-Identifier: MIT
#include "platform/TcpAccess.h"

#include <algorithm>
#include <optional>

#include <QString>
#include <QStringList>

#include "base/Failure.h"

namespace korval::platform {
namespace {

// Qt takes "10.1" and "1" as well, which nobody means.
std::optional<QHostAddress> Address(const QString& text) {
  QHostAddress address;
  if (!address.setAddress(text)) return std::nullopt;
  const bool is_ipv4 = address.protocol() == QAbstractSocket::IPv4Protocol;
  if (is_ipv4 && text.count(QLatin1Char('.')) != 3) return std::nullopt;
  return address;
}

std::optional<TcpAccess::Subnet> Subnet(const QString& text) {
  const QStringList parts = text.split(QLatin1Char('/'));
  const auto address = Address(parts.first());
  if (!address || parts.size() > 2) return std::nullopt;
  const int all_bits = address->protocol() == QAbstractSocket::IPv4Protocol ? 32 : 128;
  if (parts.size() == 1) return TcpAccess::Subnet(*address, all_bits);
  bool is_number = false;
  const int bits = parts.last().toInt(&is_number);
  if (!is_number || bits < 0 || bits > all_bits) return std::nullopt;
  return TcpAccess::Subnet(*address, bits);
}

QHostAddress ReadListen(const QString& text) {
  if (text.isEmpty()) return QHostAddress(QHostAddress::Any);
  if (const auto address = Address(text)) return *address;
  throw base::Failure(
      "'" + text.toStdString() +
      "' is no IP address to listen on: give one of this machine, as in 192.168.4.10, or none "
      "for all of them");
}

QList<TcpAccess::Subnet> ReadAllow(const QString& text) {
  QList<TcpAccess::Subnet> allowed;
  if (text.isEmpty()) return allowed;
  for (const QString& part : text.split(QLatin1Char(','))) {
    const auto subnet = Subnet(part.trimmed());
    if (!subnet) {
      throw base::Failure(
          "'" + part.trimmed().toStdString() +
          "' is no IP address of allowed clients: give addresses with commas between them, each "
          "alone or with the bits of its network, as in 192.168.4.0/24, 127.0.0.1");
    }
    allowed.append(*subnet);
  }
  return allowed;
}

}  // namespace

bool TcpAccess::Names(const QHostAddress& client) const {
  return std::any_of(allowed.begin(), allowed.end(),
                     [&](const Subnet& subnet) { return client.isInSubnet(subnet); });
}

TcpAccess ReadTcpAccess(const std::string& listen, const std::string& allow) {
  return {ReadListen(QString::fromStdString(listen).trimmed()),
          ReadAllow(QString::fromStdString(allow).trimmed())};
}

}  // namespace korval::platform
