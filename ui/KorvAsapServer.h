// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include <QVariant>
#include <QWidget>

#include "diag/viator3.h"
#include "ecu/hosted/HostSession.h"
#include "ui/Export.h"

namespace korval::host {
struct ControlParts;
}

namespace korval::ui {

/// The ASAP3 server as a control to be placed on a host application's form. It reads its settings when it
/// is created, and opens its TCP port (and the serial port, when it is set so) as the first event after it
/// was first shown. It lives on the application's main thread and keeps serving while message boxes and
/// dialogs are open. It may be deleted at any time, also while a command waits for an ECU.
///
/// A client's init needs a diagnostic session: the host hands over one of its own (`Session`), or says how
/// to make one for each client (SetSessionFactory). Without either, init is answered with failure 1001.
class KORVAL_UI_EXPORT KorvAsapServer : public QWidget {
  Q_OBJECT
  Q_PROPERTY(std::shared_ptr<korval::viator3::Session> Session READ Session WRITE SetSession
                 DESIGNABLE false STORED false)

 public:
  using SessionFactory = std::function<std::shared_ptr<viator3::Session>()>;
  using HostSessionFactory = std::function<std::shared_ptr<hosted::Session>()>;
  /// Completes the outside of the control, of which the views are given.
  using Assemble = std::function<host::ControlParts(host::ControlParts views)>;

  /// A control on this machine's ports and the usual settings store.
  explicit KorvAsapServer(QWidget* parent = nullptr);
  /// A control whose outside is put together by whoever knows better.
  explicit KorvAsapServer(const Assemble& assemble, QWidget* parent = nullptr);
  ~KorvAsapServer() override;
  /// A control that only shows what it looks like: it reads and opens nothing. Belongs to the caller or to
  /// `parent`.
  static KorvAsapServer* ForDesigner(QWidget* parent);

  /// The diagnostic session in use, null when there is none. One that is set is used but never closed; the
  /// control lets it go when its client leaves.
  std::shared_ptr<viator3::Session> Session() const;
  void SetSession(std::shared_ptr<viator3::Session> session);
  void SetSession(std::nullptr_t) { SetSession(std::shared_ptr<viator3::Session>()); }
  /// One whose operations block.
  void SetSession(std::shared_ptr<hosted::Session> session);
  /// How a client's init makes a session, which is closed when the client leaves.
  void SetSessionFactory(SessionFactory factory);
  void SetSessionFactory(HostSessionFactory factory);

  /// Reads the installation record of the host application again. Returns an invalid variant.
  Q_INVOKABLE QVariant QORGetInstallationInformation();
  /// Looks again at which diagnostic interface is chosen, after the host has changed its settings.
  Q_INVOKABLE void SelectDiagInterface();

 signals:
  /// The control was shown, but its TCP port could not be opened; the person at the console was told.
  void ShowFailed(const QString& description);

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  struct DesignerTag {};
  class Private;

  KorvAsapServer(DesignerTag, QWidget* parent);

  std::unique_ptr<Private> d_;
};

}  // namespace korval::ui
