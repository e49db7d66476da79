// SPDX-License-Identifier: MIT
#include "ecu/session/Session.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "ecu/description/ErrorNumbers.h"
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

Session::~Session() { host_->Abandon(); }

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

void Session::OfferEcuFile(const std::string& path, base::XmlDocument document) {
  files_.Offer(path, std::move(document));
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

void Session::SendFrames(pugi::xml_document& frames) {
  const auto host = host_;
  host->SendFrames(ReadCanFrames(frames, host->Errors()));
}

std::shared_ptr<viator3::InstanceObject> Session::CreateInstance(const std::string& prog_id) {
  if (!prog_id.starts_with(kInstancePrefix)) {
    throw host_->Errors().MakeFailure(kUnknownName, prog_id + " is no class of instance objects");
  }
  return std::make_shared<InstanceObject>(host_->SharedErrors());
}

}  // namespace korval::ecu
