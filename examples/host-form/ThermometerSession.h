// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ecu/hosted/HostSession.h"

namespace host_form {

class Thermometer;

/// A diagnostic session on a thermometer that the host application reads itself. It has one ECU function,
/// THERMOMETER, with one request that brings one value, Temperature.
class ThermometerSession : public korval::hosted::Session {
 public:
  ThermometerSession();

  std::string Port() const override { return port_; }
  /// Every port is as good as another: there is no interface to open.
  void SetPort(const std::string& port) override { port_ = port; }
  void Close() override {}
  void SetLanguage(const std::string&) override {}
  void SetErrorsFile(const std::string&) override {}
  void OfferEcuFile(const std::string&) override {}
  std::shared_ptr<korval::hosted::Ecu> EcuByFunction(const std::string& function) override;
  std::vector<std::shared_ptr<korval::hosted::Ecu>> Ecus() const override;
  bool MessagingLoaded() const override { return false; }
  void SendFrames(const std::vector<korval::viator3::CanFrame>& frames) override;
  std::shared_ptr<korval::hosted::InstanceObject> CreateInstance(const std::string& prog_id) override;

 private:
  std::string port_ = "THERMOMETER";
  std::shared_ptr<Thermometer> thermometer_;
};

}  // namespace host_form
