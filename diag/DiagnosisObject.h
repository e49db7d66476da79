// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/ByteBuffer.h"
#include "diag/viator3.h"
#include "host/trace/TraceConsole.h"

namespace korval::diag {

/// Owns the one diagnosis object through which all traffic with the ECUs goes: a session that an init
/// command opened, or one that the host application handed in, which is used but not closed. Commands
/// hold the session they work on themselves, because it may be released here while they wait.
class DiagnosisObject {
 public:
  using SessionFactory = std::function<std::shared_ptr<viator3::Session>()>;
  enum class HostSession { kKeepOpen, kClose };

  /// `drop_collections` empties what hangs on the session: the acquisition lists and both collections.
  /// The console outlives this object.
  DiagnosisObject(host::TraceConsole& console, SessionFactory create_session,
                  std::function<void()> drop_collections);

  /// Folder of the installed diagnostic software, where the table of error texts lies. One that is not
  /// absolute, or none, is looked for from the application's own folder, never from the working directory.
  void SetServerFolder(const std::string& folder, const std::string& application_folder) {
    server_folder_ = folder;
    application_folder_ = application_folder;
  }

  /// The diagnosis object, null when there is none.
  std::shared_ptr<viator3::Session> Session() const { return session_; }
  /// Takes a session of the host application, as it stands.
  void SetSession(std::shared_ptr<viator3::Session> session);
  bool SessionIsExternal() const { return session_is_external_; }
  /// The diagnosis object; raises Failure 1000 when there is none.
  std::shared_ptr<viator3::Session> RequireSession() const;

  /// Makes a diagnosis object available, if need be by opening one on the port it reports. When that
  /// fails, traces it, appends the error's number and description to `reply` and returns false.
  base::Task<bool> CreateDiagnosisObject(base::ByteBuffer& reply);

  /// Drops the collections and releases the diagnosis object; its own session is closed, a host's only on
  /// request, and the closing goes to its end by itself. Does nothing without one, and no failure leaves it.
  void ReleaseDiagnosisObject(HostSession host_session = HostSession::kKeepOpen) noexcept;

 private:
  base::Task<void> Open();
  static base::Task<void> Close(std::shared_ptr<viator3::Session> session);

  host::TraceConsole& console_;
  SessionFactory create_session_;
  std::function<void()> drop_collections_;
  std::string server_folder_;
  std::string application_folder_;
  std::shared_ptr<viator3::Session> session_;
  bool session_is_external_ = false;
};

}  // namespace korval::diag
