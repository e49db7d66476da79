// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/Failure.h"
#include "base/Job.h"
#include "diag/viator3.h"
#include "ecu/ecufile/XmlEcuFileCache.h"
#include "tests/support/FakeEcu.h"
#include "tests/support/FakeInstance.h"

namespace korval::tests {

/// A diagnostic session that records what is asked of it in `log`, in order, and does what the test says.
class FakeSession : public viator3::Session {
 public:
  std::shared_ptr<FakeEcu> AddEcu(const std::string& function, const std::string& name,
                                  const std::string& protocol) {
    auto ecu = std::make_shared<FakeEcu>(function, name, protocol);
    ecus_.push_back(ecu);
    return ecu;
  }

  /// From now on another object serves the function, as after its file has changed.
  std::shared_ptr<FakeEcu> ReplaceEcu(const std::string& function) {
    std::erase_if(ecus_, [&](const auto& ecu) { return ecu->Function() == function; });
    return AddEcu(function, function, "KWP2000");
  }

  std::string Port() const override { return port; }
  base::Task<void> SetPort(std::string new_port) override {
    log.push_back("Port=" + new_port);
    co_await base::Blocking([&] {
      if (const auto hook = on_set_port) hook(new_port);
    });
  }
  base::Task<void> Close() override {
    log.emplace_back("Close");
    co_await base::Blocking([this] {
      if (const auto hook = on_close) hook();
    });
  }
  void SetLanguage(const std::string& language) override { log.push_back("Language=" + language); }
  void SetErrorsFile(const std::string& path) override { log.push_back("ErrorsFile=" + path); }
  std::shared_ptr<const viator3::EcuFile> ReadEcuFile(const std::string& path) override {
    return files_.Read(path);
  }
  void OfferEcuFile(const std::shared_ptr<const viator3::EcuFile>& file) override {
    log.push_back("OfferEcuFile=" + file->Path());
    offered = file;
  }
  std::shared_ptr<viator3::Ecu> EcuByFunction(const std::string& function) override {
    for (const auto& ecu : ecus_) {
      if (ecu->Function() == function) return ecu;
    }
    throw base::Failure(2020, "no ECU file for the function " + function);
  }
  std::vector<std::shared_ptr<viator3::Ecu>> Ecus() const override { return ecus_; }
  bool MessagingLoaded() const override { return messaging_loaded; }
  base::Task<void> SendFrames(std::span<const viator3::CanFrame> frames) override {
    co_await base::Blocking([&] {
      if (on_send_frames) on_send_frames(frames);
    });
  }
  std::shared_ptr<viator3::InstanceObject> CreateInstance(const std::string& prog_id) override {
    log.push_back("CreateInstance=" + prog_id);
    if (!instance) throw base::Failure(429, "no such class");
    return instance;
  }

  std::string port = "COM7";
  bool messaging_loaded = false;
  std::shared_ptr<FakeInstance> instance = std::make_shared<FakeInstance>();
  std::shared_ptr<const viator3::EcuFile> offered;
  std::function<void(const std::string&)> on_set_port;
  std::function<void()> on_close;
  std::function<void(std::span<const viator3::CanFrame>)> on_send_frames;
  std::vector<std::string> log;

 private:
  ecu::XmlEcuFileCache files_;
  std::vector<std::shared_ptr<viator3::Ecu>> ecus_;
};

}  // namespace korval::tests
