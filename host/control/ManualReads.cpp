// SPDX-License-Identifier: MIT
#include "host/control/ManualReads.h"

#include <string>
#include <vector>

#include "base/Failure.h"
#include "diag/EcuIdentification.h"

namespace korval::host {
namespace {

constexpr std::size_t kValueColumn = 2;
constexpr std::size_t kIdentificationColumn = 6;

}  // namespace

ManualReads::ManualReads(TraceConsole& console, const diag::DiagnosisObject& diagnosis,
                         const model::KorvAsapFiles& files, const model::KorvAsapValues& values,
                         model::Acquisition& acquisition, ListView& file_view, ListView& data_view)
    : console_(console),
      diagnosis_(diagnosis),
      files_(files),
      values_(values),
      acquisition_(acquisition),
      file_view_(file_view),
      data_view_(data_view) {}

void ManualReads::ReadData() { Read(ReadDataTask()); }

void ManualReads::ReadIdent() { Read(ReadIdentTask()); }

void ManualReads::Read(base::Task<void> read) {
  if (!read_.IsUnderWay()) read_.Start(std::move(read));
}

base::Task<void> ManualReads::ReadDataTask() {
  try {
    co_await ExecuteRequests();
    ShowValues();
  } catch (const base::Failure& failure) {
    console_.Line("Read data error : " + failure.Description());
  }
}

// One request that fails leaves the others their turn.
base::Task<void> ManualReads::ExecuteRequests() {
  if (!acquisition_.Items()) throw base::Failure("The client has chosen no values for acquisition");
  const Session session = diagnosis_.RequireSession();
  const auto requests = acquisition_.RequestsToExecute();
  for (const auto& request : *requests) {
    try {
      co_await request->Execute();
    } catch (const base::Failure& failure) {
      RequireCurrent(session);
      console_.Line("Read data error : " + failure.Description());
    }
    RequireCurrent(session);
  }
}

void ManualReads::ShowValues() {
  const auto items = acquisition_.Items();
  if (!items) return;
  std::size_t row = 0;
  for (const auto& value : values_) {
    if (items->Contains(value->valueName)) {
      data_view_.SetCell(row, kValueColumn, items->Item(value->valueName)->Text());
    }
    ++row;
  }
}

base::Task<void> ManualReads::ReadIdentTask() {
  try {
    co_await IdentifyFiles();
  } catch (const base::Failure& failure) {
    console_.Line("Read ident error : " + failure.Description());
  }
}

base::Task<void> ManualReads::IdentifyFiles() {
  if (files_.Count() == 0) throw base::Failure("The client has selected no file");
  const Session session = diagnosis_.RequireSession();
  const std::vector<std::shared_ptr<model::KorvAsapFile>> files(files_.begin(), files_.end());
  std::size_t row = 0;
  for (const auto& file : files) {
    co_await Identify(session, file);
    RequireCurrent(session);
    file_view_.SetCell(row++, kIdentificationColumn, file->Identification());
  }
}

base::Task<void> ManualReads::Identify(Session session, std::shared_ptr<model::KorvAsapFile> file) {
  try {
    const auto ecu = session->EcuByFunction(file->KorvFunction());
    file->SetIdentification(co_await diag::ReadEcuIdentification(session, ecu));
    console_.Line("Read Ecu Ident : " + file->KorvFunction() + " = " + file->Identification());
  } catch (const base::Failure& failure) {
    console_.Line("Read ident error : " + failure.Description());
  }
}

void ManualReads::RequireCurrent(const Session& session) const {
  if (diagnosis_.Session() != session) {
    throw base::Failure(kLinkLost, "The session was closed while it was read by hand");
  }
}

}  // namespace korval::host
