// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>

#include <QString>
#include <QWidget>

#include "ui/Export.h"

namespace korval::host {
class MessageBox;
class SettingsStore;
struct PanelValues;
}  // namespace korval::host

namespace korval::ui {

/// The settings panel: the serial line, the TCP port with its clients, and the two folders of the server. OK
/// saves them to the server's settings; `ValueChanged` tells the end of an edit.
class KORVAL_UI_EXPORT ConfigComPort : public QWidget {
  Q_OBJECT
  Q_PROPERTY(QString AsapFolder READ AsapFolder WRITE SetAsapFolder DESIGNABLE false STORED false)
  Q_PROPERTY(QString KorvFolder READ KorvFolder WRITE SetKorvFolder DESIGNABLE false STORED false)
  Q_PROPERTY(QString Setting READ Setting WRITE SetSetting DESIGNABLE false STORED false)
  Q_PROPERTY(int CommPort READ CommPort WRITE SetCommPort DESIGNABLE false STORED false)
  Q_PROPERTY(int Handshaking READ Handshaking WRITE SetHandshaking DESIGNABLE false STORED false)
  Q_PROPERTY(int TcpIpPort READ TcpIpPort WRITE SetTcpIpPort DESIGNABLE false STORED false)
  Q_PROPERTY(int ComAutoOpen READ ComAutoOpen WRITE SetComAutoOpen DESIGNABLE false STORED false)

 public:
  /// A panel on the server's usual settings store.
  explicit ConfigComPort(QWidget* parent = nullptr);
  /// A panel on a store, with its own way of telling failures; for the control, which shares both.
  ConfigComPort(std::shared_ptr<host::SettingsStore> store, std::shared_ptr<host::MessageBox> message_box,
                QWidget* parent);
  ~ConfigComPort() override;
  /// A panel that only shows what it looks like; belongs to the caller or to `parent`.
  static ConfigComPort* ForDesigner(QWidget* parent);

  /// The current path of the folder list.
  QString AsapFolder() const;
  void SetAsapFolder(const QString& path);
  QString KorvFolder() const;
  void SetKorvFolder(const QString& path);
  /// Speed, parity letter, data bits and stop bits as of the last OK, as in "9600,N,8,1".
  QString Setting() const;
  void SetSetting(const QString& setting);
  /// As of the last OK: the serial port's number, the flow-control code (0 none, 1 Xon/Xoff, 2 RTS, 3
  /// Xon/RTS), the TCP port, and whether the serial port opens at start: -1 (true) or 0.
  int CommPort() const;
  void SetCommPort(int number);
  int Handshaking() const;
  void SetHandshaking(int code);
  int TcpIpPort() const;
  void SetTcpIpPort(int port);
  int ComAutoOpen() const;
  void SetComAutoOpen(int on);

  /// Fills the lists. It has run once when the panel is there.
  Q_INVOKABLE void LoadPropertySettings();
  /// Loads the fields; `com_auto_open` is true for every number but 0. Where to listen and whom to let in
  /// stays as it is.
  Q_INVOKABLE void SetValue(const QString& setting, int comm_port, int handshaking, int com_auto_open,
                            int tcp_ip_port, const QString& asap_folder, const QString& korv_folder);

  void Load(const host::PanelValues& values);
  host::PanelValues Values() const;

 signals:
  /// The edit has ended; `cancelled` says how. A receiver may change it, as it was passed by reference
  /// before; nobody looks at it afterwards.
  void ValueChanged(bool& cancelled);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  class Private;

  template <typename Change>
  void Set(Change change);
  void Connect();
  void RaiseValueChanged(bool cancelled);

  std::shared_ptr<Private> d_;  // also held by an OK or Cancel under way
};

}  // namespace korval::ui
