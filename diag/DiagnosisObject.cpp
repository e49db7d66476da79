// SPDX-License-Identifier: MIT
#include "diag/DiagnosisObject.h"

#include <filesystem>
#include <utility>

#include "base/Failure.h"
#include "diag/LinkErrors.h"
#include "protocol/Reply.h"

namespace korval::diag {
DiagnosisObject::DiagnosisObject(host::TraceConsole& console, SessionFactory create_session,
                                 std::function<void()> drop_collections)
    : console_(console),
      create_session_(std::move(create_session)),
      drop_collections_(std::move(drop_collections)) {}

void DiagnosisObject::SetSession(std::shared_ptr<viator3::Session> session) {
  session_ = std::move(session);
  session_is_external_ = true;
}

std::shared_ptr<viator3::Session> DiagnosisObject::RequireSession() const {
  if (!session_) throw base::Failure(kSessionLost, "No diagnostic session, send init first");
  return session_;
}

bool DiagnosisObject::CreateDiagnosisObject(base::ByteBuffer& reply) {
  if (session_) return true;
  session_is_external_ = false;
  console_.Line("Create diagnosis object");
  console_.Line("  Server = " + server_folder_);
  try {
    Open();
    return true;
  } catch (const base::Failure& failure) {
    console_.Line("Open Diagnostic Session error : " + failure.Description());
    protocol::AppendErrorRecord(reply, failure.Description(), failure.Number());
    return false;
  }
}

void DiagnosisObject::Open() {
  std::shared_ptr<viator3::Session> session;
  try {
    session = create_session_();
    session_ = session;
    session->SetLanguage("en");
    session->SetErrorsFile(
        (std::filesystem::path(application_folder_) / server_folder_ / "errors.xml").string());
    session->SetPort(session->Port());
    // An event inside the wait for the interface may have ended the client's session.
    if (session_ != session) throw base::Failure(kSessionLost, "The session was closed while it was opened");
  } catch (const base::Failure&) {
    console_.Line("Diagnosis Communication port = " + (session ? session->Port() : std::string()));
    if (session_ == session) session_.reset();
    throw;
  }
}

void DiagnosisObject::ReleaseDiagnosisObject(HostSession host_session) noexcept {
  if (!session_) return;
  // Taken out first, so that an event inside the closing finds nothing left to release.
  const std::shared_ptr<viator3::Session> session = std::exchange(session_, nullptr);
  base::IgnoreFailure(drop_collections_);
  if (session_is_external_ && host_session == HostSession::kKeepOpen) return;
  base::IgnoreFailure([&] { session->Close(); });
  base::IgnoreFailure([&] { session->SetPort(""); });
}

}  // namespace korval::diag
