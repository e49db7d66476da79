// SPDX-License-Identifier: MIT
#include "model/SelectFile.h"

#include <utility>
#include <vector>

#include "base/Errand.h"
#include "base/Failure.h"
#include "diag/EcuIdentification.h"
#include "diag/LinkErrors.h"
#include "protocol/FieldCodec.h"
#include "protocol/NamedField.h"
#include "protocol/Reply.h"

namespace korval::model {
namespace {

constexpr char kCommand[] = "select file";

// The ECU object that serves a file; null for a file whose loading failed.
std::shared_ptr<viator3::Ecu> EcuOf(viator3::Session& session, const KorvAsapFile& file) {
  if (file.KorvFunction().empty()) return nullptr;
  try {
    return session.EcuByFunction(file.KorvFunction());
  } catch (const base::Failure&) {
    return nullptr;
  }
}

bool HasIdentification(const viator3::Ecu& ecu) {
  return ecu.Protocol() == diag::kKwp2000 || ecu.Protocol() == diag::kDiagOnCan;
}

std::vector<std::string> Row(viator3::Session& session, const KorvAsapFile& file) {
  const auto ecu = EcuOf(session, file);
  return {std::to_string(file.Id()), file.DescriptionFile(),
          file.BinaryFile(),         std::to_string(file.Destination()),
          file.KorvFunction(),       ecu ? ecu->Protocol() : std::string(),
          file.Identification()};
}

}  // namespace

SelectFile::SelectFile(host::TraceConsole& console, const diag::DiagnosisObject& diagnosis,
                       KorvAsapFiles& files, host::ListView& file_view, std::function<void()> on_selected)
    : console_(console),
      diagnosis_(diagnosis),
      files_(files),
      file_view_(file_view),
      on_selected_(std::move(on_selected)) {}

void SelectFile::AttachTo(protocol::Dispatcher& dispatcher) {
  dispatcher.Attach(
      protocol::CommandCode::kSelectFile,
      [this](base::ByteView parameters, base::ByteBuffer& reply) { return Handle(parameters, reply); });
}

std::int32_t SelectFile::Handle(base::ByteView parameters, base::ByteBuffer& reply) {
  std::string description_file;
  Session session;
  try {
    std::size_t position = 0;
    description_file = protocol::ReadNamedField(kCommand, "description file", "string",
                                                [&] { return protocol::ReadString(parameters, position); });
    session = diagnosis_.RequireSession();
    const auto file = Select(session, description_file, parameters, position);
    protocol::AppendWord(reply, file->Id());
  } catch (const base::Failure& failure) {
    console_.Line("   error when loading korval file : " + description_file);
    console_.Line("   error : " + failure.Description());
    protocol::AppendErrorRecord(reply, "select file error : " + failure.Description(), base::kOwnFailure);
    return protocol::kError;
  }
  on_selected_();
  RebuildFileView(session);
  return protocol::kSuccess;
}

std::shared_ptr<KorvAsapFile> SelectFile::Select(const Session& session, const std::string& description_file,
                                                 base::ByteView parameters, std::size_t position) {
  const std::string section = protocol::ReadNamedField(
      kCommand, "section", "string", [&] { return protocol::ReadString(parameters, position); });
  const std::int32_t address = protocol::ReadNamedField(
      kCommand, "address", "word", [&] { return protocol::ReadWord(parameters, position); });
  console_.Line("select file(" + description_file + "," + section + "," + std::to_string(address) + ")");
  auto file = files_.Add(description_file, section, address);
  file->ReadDescriptionFile();
  const std::string messaging = file->GetAutoCanFile();
  session->OfferEcuFile(file->KorvFileName(), file->TakeEcuDocument());
  console_.Line(file->KorvFileName() + " load in Korval session");
  if (!messaging.empty()) LoadMessaging(*session, messaging);
  base::Errand::RequireWanted();
  if (diagnosis_.Session() != session) {
    throw base::Failure(diag::kSessionLost, "The session was closed while the file was selected");
  }
  return file;
}

void SelectFile::LoadMessaging(viator3::Session& session, const std::string& path) {
  try {
    session.EcuByFunction(diag::kCanFunction)->LoadMessaging(path);
    console_.Line("   messaging automatic loading : " + path);
  } catch (const base::Failure& failure) {
    console_.Line("   Error messaging automatic loading : " + path + " " + failure.Description());
  }
}

// Shows the files as they are once every ECU has been asked: events inside the waits may change them.
void SelectFile::RebuildFileView(const Session& session) {
  if (!IdentifyEcus(session)) return;
  file_view_.Clear();
  for (const auto& file : files_) file_view_.AddRow(Row(*session, *file));
}

// False when the session ended meanwhile.
bool SelectFile::IdentifyEcus(const Session& session) {
  const std::vector<std::shared_ptr<KorvAsapFile>> files(files_.begin(), files_.end());
  for (const auto& file : files) {
    if (!file->Identification().empty()) continue;
    const auto ecu = EcuOf(*session, *file);
    if (!ecu || !HasIdentification(*ecu)) continue;
    const std::string identification = diag::ReadEcuIdentification(*session, *ecu);
    if (diagnosis_.Session() != session) return false;
    if (!base::Errand::IsWanted()) break;  // who selects next asks again
    file->SetIdentification(identification);
  }
  return true;
}

}  // namespace korval::model
