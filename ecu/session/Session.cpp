// SPDX-License-Identifier: MIT
#include "ecu/session/Session.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/ErrorNumbers.h"
#include "ecu/ecufile/ErrorFile.h"
#include "ecu/session/CanFrames.h"
#include "ecu/session/InstanceObject.h"

namespace korval::ecu {
namespace {

constexpr std::string_view kInstancePrefix = "qor4inst.";

}  // namespace

Session::Session(const SessionEnvironment& environment)
    : host_(std::make_shared<LinkHost>(environment)),
      files_(environment.ecu_folder),
      can_(std::make_shared<CanEcu>(host_)) {}

Session::~Session() { host_->Close(); }

base::Task<void> Session::SetPort(std::string port) {
  std::shared_ptr(host_)->Open(port);
  co_return;
}

base::Task<void> Session::Close() {
  std::shared_ptr(host_)->Close();
  co_return;
}

void Session::SetLanguage(const std::string& language) {
  host_->Errors().SetLanguage(language);
  if (!errors_file_.empty()) LoadErrors();
}

void Session::SetErrorsFile(const std::string& path) {
  errors_file_ = path;
  LoadErrors();
}

void Session::LoadErrors() {
  const std::string damage = LoadErrorFile(errors_file_, host_->Errors());
  if (!damage.empty()) host_->Note(damage);
}

void Session::OfferEcuFile(const std::shared_ptr<const viator3::EcuFile>& file) {
  const auto read = std::dynamic_pointer_cast<const XmlEcuFile>(file);
  files_.Offer(read ? read : files_.Read(file->Path()));
}

std::shared_ptr<viator3::Ecu> Session::EcuByFunction(const std::string& function) {
  const auto known =
      std::find_if(ecus_.begin(), ecus_.end(), [&](const auto& ecu) { return ecu->Function() == function; });
  if (function == can_->Function()) return known == ecus_.end() ? ecus_.emplace_back(can_) : *known;
  const auto description = files_.Find(function);
  if (!description) {
    throw host_->Errors().MakeFailure(kNoEcuFile,
                                      function + " (select its file, or put it into the ECU folder)");
  }
  if (known == ecus_.end()) return ecus_.emplace_back(std::make_shared<DiagnosticEcu>(host_, description));
  if (!std::static_pointer_cast<DiagnosticEcu>(*known)->Serves(description)) {
    *known = std::make_shared<DiagnosticEcu>(host_, description);
  }
  return *known;
}

base::Task<void> Session::SendFrames(std::span<const viator3::CanFrame> frames) {
  const auto host = host_;
  co_await host->SendFrames(ReadCanFrames(frames, host->Errors()));
}

std::shared_ptr<viator3::InstanceObject> Session::CreateInstance(const std::string& prog_id) {
  if (!prog_id.starts_with(kInstancePrefix)) {
    throw host_->Errors().MakeFailure(kUnknownName, prog_id + " is no class of instance objects");
  }
  return std::make_shared<InstanceObject>(host_->SharedErrors());
}

}  // namespace korval::ecu
