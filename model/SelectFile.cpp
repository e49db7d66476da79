// SPDX-License-Identifier: MIT
#include "model/SelectFile.h"

#include <utility>
#include <vector>

#include "base/Failure.h"
#include "diag/EcuIdentification.h"
#include "protocol/FieldCodec.h"
#include "protocol/NamedField.h"
#include "protocol/Reply.h"

namespace korval::model {
namespace {

constexpr char kCommand[] = "select file";
// The function that stands for the CAN messaging.
constexpr char kCanFunction[] = "CAN";

// Null when the session does not know the function.
std::shared_ptr<viator3::Ecu> EcuOf(viator3::Session& session, const std::string& function) {
  try {
    return session.EcuByFunction(function);
  } catch (const base::Failure&) {
    return nullptr;
  }
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

base::Task<std::int32_t> SelectFile::Handle(base::ByteView parameters, base::ByteBuffer& reply) {
  std::string description_file;
  Session session;
  try {
    std::size_t position = 0;
    description_file = protocol::ReadNamedField(kCommand, "description file", "string",
                                                [&] { return protocol::ReadString(parameters, position); });
    session = diagnosis_.RequireSession();
    const auto file = co_await Select(session, description_file, parameters, position);
    protocol::AppendWord(reply, file->Id());
  } catch (const base::Failure& failure) {
    console_.Line("   error when loading korval file : " + description_file);
    console_.Line("   error : " + failure.Description());
    protocol::AppendErrorRecord(reply, "select file error : " + failure.Description(), kOwnFailure);
    co_return protocol::kError;
  }
  on_selected_();
  co_await RebuildFileView(session);
  co_return protocol::kSuccess;
}

base::Task<std::shared_ptr<KorvAsapFile>> SelectFile::Select(Session session, std::string description_file,
                                                             base::ByteView parameters,
                                                             std::size_t position) {
  const std::string section = protocol::ReadNamedField(
      kCommand, "section", "string", [&] { return protocol::ReadString(parameters, position); });
  const std::int32_t address = protocol::ReadNamedField(
      kCommand, "address", "word", [&] { return protocol::ReadWord(parameters, position); });
  console_.Line("select file(" + description_file + "," + section + "," + std::to_string(address) + ")");
  auto file = files_.Add(description_file, section, address);
  file->ReadDescriptionFile([&session](const std::string& path) { return session->ReadEcuFile(path); });
  const std::string messaging = file->GetAutoCanFile();
  session->OfferEcuFile(file->TakeEcuFile());
  console_.Line(file->KorvFileName() + " load in Korval session");
  TraceServingFile(*file);
  if (!messaging.empty()) co_await LoadMessaging(session, messaging);
  if (!IsCurrent(session)) {
    throw base::Failure(kLinkLost, "The session was closed while the file was selected");
  }
  co_return file;
}

base::Task<void> SelectFile::LoadMessaging(Session session, std::string path) {
  try {
    const auto can = session->EcuByFunction(kCanFunction);
    co_await can->LoadMessaging(path);
    console_.Line("   messaging automatic loading : " + path);
  } catch (const base::Failure& failure) {
    console_.Line("   Error messaging automatic loading : " + path + " " + failure.Description());
  }
}

void SelectFile::TraceServingFile(const KorvAsapFile& file) {
  ForgetOldSession();
  std::string& serving = functions_[file.KorvFunction()].serving;
  if (!serving.empty() && serving != file.KorvFileName()) {
    console_.Line("   the function " + file.KorvFunction() + " is served by " + file.KorvFileName() +
                  " from now on, no longer by " + serving +
                  "; a LUN that was read or written by name before keeps what it had");
  }
  serving = file.KorvFileName();
}

void SelectFile::ForgetOldSession() {
  if (generation_ == files_.Generation()) return;
  generation_ = files_.Generation();
  functions_.clear();
  sorted_in_ = 0;
}

// Shows the files as they are once every ECU has been asked: they may change in the waits.
base::Task<void> SelectFile::RebuildFileView(Session session) {
  SortInNewFiles();
  if (!co_await AskFunctions(session)) co_return;
  file_view_.RebuildWhenShown([watch = std::weak_ptr(self_)] {
    if (const auto self = watch.lock()) (*self)->AddRows();
  });
}

// A bench may select thousands of times: each file is looked at once, and an ECU asked once for all that wait
// for its identification.
void SelectFile::SortInNewFiles() {
  ForgetOldSession();
  while (sorted_in_ < files_.Count()) {
    const std::string& function = files_.Item(++sorted_in_)->KorvFunction();
    if (!function.empty()) functions_[function].unidentified.push_back(sorted_in_);
  }
}

// False when the session ended meanwhile.
base::Task<bool> SelectFile::AskFunctions(Session session) {
  std::vector<std::string> names;
  for (const auto& [name, function] : functions_) names.push_back(name);
  for (const std::string& name : names) {
    const auto ecu = EcuOf(*session, name);
    functions_[name].protocol = ecu ? ecu->Protocol() : std::string();
    if (!ecu || !ecu->Features().identification) continue;
    if (!co_await Identify(session, ecu, name)) co_return false;
  }
  co_return true;
}

base::Task<bool> SelectFile::Identify(Session session, std::shared_ptr<viator3::Ecu> ecu,
                                      std::string function) {
  const auto files = Unidentified(function);
  if (files.empty()) co_return true;
  const std::string identification = co_await diag::ReadEcuIdentification(session, ecu);
  if (!IsCurrent(session)) co_return false;
  for (const auto& file : files) file->SetIdentification(identification);
  co_return true;
}

// False once the client's session has ended.
bool SelectFile::IsCurrent(const Session& session) const {
  return diagnosis_.Session() == session && generation_ == files_.Generation();
}

// The files of a function whose identification is still empty; what has one need not be looked at again.
std::vector<std::shared_ptr<KorvAsapFile>> SelectFile::Unidentified(const std::string& function) {
  std::vector<std::int32_t>& positions = functions_[function].unidentified;
  std::erase_if(positions, [this](std::int32_t position) {
    return position > files_.Count() || !files_.Item(position)->Identification().empty();
  });
  std::vector<std::shared_ptr<KorvAsapFile>> files;
  files.reserve(positions.size());
  for (const std::int32_t position : positions) files.push_back(files_.Item(position));
  return files;
}

void SelectFile::AddRows() {
  for (const auto& file : files_) {
    const auto function = functions_.find(file->KorvFunction());
    file_view_.AddRow({std::to_string(file->Id()), file->DescriptionFile(), file->BinaryFile(),
                       std::to_string(file->Destination()), file->KorvFunction(),
                       function == functions_.end() ? std::string() : function->second.protocol,
                       file->Identification()});
  }
}

}  // namespace korval::model
