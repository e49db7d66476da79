// SPDX-License-Identifier: MIT
#include "diag/DiagnosisObject.h"

#include <exception>
#include <filesystem>
#include <utility>

#include "base/Failure.h"
#include "base/Job.h"
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
  if (!session_) throw base::Failure(kLinkLost, "No diagnostic session, send init first");
  return session_;
}

base::Task<bool> DiagnosisObject::CreateDiagnosisObject(base::ByteBuffer& reply) {
  if (session_) co_return true;
  session_is_external_ = false;
  console_.Line("Create diagnosis object");
  console_.Line("  Server = " + server_folder_);
  try {
    co_await Open();
    co_return true;
  } catch (const base::Failure& failure) {
    console_.Line("Open Diagnostic Session error : " + failure.Description());
    protocol::AppendErrorRecord(reply, failure.Description(), failure.Number());
    co_return false;
  }
}

base::Task<void> DiagnosisObject::Open() {
  std::shared_ptr<viator3::Session> session;
  try {
    session = create_session_();
    session_ = session;
    session->SetLanguage("en");
    session->SetErrorsFile(
        (std::filesystem::path(application_folder_) / server_folder_ / "errors.xml").string());
    co_await session->SetPort(session->Port());
    // The client's session may have ended meanwhile.
    if (session_ != session) throw base::Failure(kLinkLost, "The session was closed while it was opened");
  } catch (const base::Failure&) {
    console_.Line("Diagnosis Communication port = " + (session ? session->Port() : std::string()));
    if (session_ == session) session_.reset();
    throw;
  }
}

void DiagnosisObject::ReleaseDiagnosisObject(HostSession host_session) noexcept {
  if (!session_) return;
  const std::shared_ptr<viator3::Session> session = std::exchange(session_, nullptr);
  base::IgnoreFailure(drop_collections_);
  if (session_is_external_ && host_session == HostSession::kKeepOpen) return;
  base::IgnoreFailure([&] { base::Job::Run(Close(session)); });
}

base::Task<void> DiagnosisObject::Close(std::shared_ptr<viator3::Session> session) {
  try {
    co_await session->Close();
  } catch (const std::exception&) {
    // The port is released all the same.
  }
  co_await session->SetPort("");
}

}  // namespace korval::diag
