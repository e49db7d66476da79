// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "diag/viator3.h"
#include "ecu/session/CanEcu.h"
#include "ecu/session/DiagnosticEcu.h"
#include "ecu/session/EcuFiles.h"
#include "ecu/session/LinkHost.h"
#include "ecu/session/SessionFactory.h"

namespace korval::ecu {

/// The diagnosis object. ECU objects, requests and items that others hold survive it; what they then ask of
/// an ECU fails with 1000.
class Session : public viator3::Session {
 public:
  explicit Session(const SessionEnvironment& environment);
  ~Session() override;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  std::string Port() const override { return host_->Port(); }
  base::Task<void> SetPort(std::string port) override;
  base::Task<void> Close() override;
  void SetLanguage(const std::string& language) override;
  void SetErrorsFile(const std::string& path) override;
  std::shared_ptr<const viator3::EcuFile> ReadEcuFile(const std::string& path) override {
    return files_.Read(path);
  }
  void OfferEcuFile(const std::shared_ptr<const viator3::EcuFile>& file) override;
  /// A file offered later for the same function brings a new object; those who hold the old one keep it.
  std::shared_ptr<viator3::Ecu> EcuByFunction(const std::string& function) override;
  std::vector<std::shared_ptr<viator3::Ecu>> Ecus() const override { return ecus_; }
  bool MessagingLoaded() const override { return can_->MessagingLoaded(); }
  base::Task<void> SendFrames(std::span<const viator3::CanFrame> frames) override;
  std::shared_ptr<viator3::InstanceObject> CreateInstance(const std::string& prog_id) override;

 private:
  void LoadErrors();

  std::shared_ptr<LinkHost> host_;
  EcuFiles files_;
  std::shared_ptr<CanEcu> can_;
  std::string errors_file_;
  std::vector<std::shared_ptr<viator3::Ecu>> ecus_;
};

}  // namespace korval::ecu
