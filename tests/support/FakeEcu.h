// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/Job.h"
#include "diag/viator3.h"
#include "ecu/kwp2000/Kwp2000Dialect.h"
#include "ecu/service/ReadTroubleCodes.h"
#include "tests/support/FakeRequest.h"

namespace korval::tests {

/// An ECU function whose steps do what the test says. `sent` records the bytes of every request.
class FakeEcu : public viator3::Ecu {
 public:
  FakeEcu(std::string function, std::string name, std::string protocol)
      : function_(std::move(function)), name_(std::move(name)), protocol_(std::move(protocol)) {}

  std::shared_ptr<FakeRequest> AddRequest(const std::string& name) {
    auto request = std::make_shared<FakeRequest>(name);
    requests_.push_back(request);
    return request;
  }

  const std::string& Function() const override { return function_; }
  const std::string& Name() const override { return name_; }
  const std::string& Protocol() const override { return protocol_; }
  bool Initialised() const override { return initialised; }
  viator3::Features Features() const override {
    const bool on_can = protocol_ == "DiagOnCAN";
    return {.initialisation = function_ != "CAN",
            .identification = on_can || protocol_ == "KWP2000",
            .needs_messaging = on_can};
  }
  base::Task<void> Initialise() override {
    ++initialisations;
    co_await base::Blocking([this] {
      if (on_initialise) on_initialise();
    });
    initialised = true;
  }
  base::Task<void> Reinitialise() override {
    ++reinitialisations;
    co_await base::Blocking([this] {
      if (on_reinitialise) on_reinitialise();
    });
  }
  base::Task<void> Send(const base::ByteBuffer& request, base::ByteBuffer& answer) override {
    sent.push_back(request.ToHex());
    co_await base::Blocking([&] {
      if (on_send) on_send(request, answer);
    });
  }
  base::Task<void> ReadTroubleCodes(viator3::TroubleCodeListener& listener) override {
    return ecu::ReadTroubleCodes(ecu::Kwp2000().ReadTroubleCodes(), listener,
                                 [this](base::ByteBuffer request) { return Ask(std::move(request)); });
  }
  base::Task<viator3::Exchange> ReadIdentification() override { return Ask(ecu::Kwp2000().Identification()); }
  const Requests& RequestList() override { return requests_; }
  const std::vector<std::string>& ReferenceData() override { return reference_data; }
  std::shared_ptr<viator3::DataItem> FindAnswerItem(const std::string& name) override {
    for (const auto& request : requests_) {
      for (const auto& item : request->Data()) {
        if (item->Name() == name) return item;
      }
    }
    return nullptr;
  }
  base::Task<void> LoadMessaging(std::string path) override {
    messaging.push_back(path);
    co_await base::Blocking([this] {
      if (on_load_messaging) on_load_messaging();
    });
  }

  bool initialised = false;
  int initialisations = 0;
  int reinitialisations = 0;
  std::function<void()> on_initialise;
  std::function<void()> on_reinitialise;
  std::function<void(const base::ByteBuffer&, base::ByteBuffer&)> on_send;
  std::function<void()> on_load_messaging;
  std::vector<std::string> sent;
  std::vector<std::string> reference_data;
  std::vector<std::string> messaging;

 private:
  base::Task<viator3::Exchange> Ask(base::ByteBuffer request) {
    viator3::Exchange exchange{std::move(request), {}, {}};
    try {
      co_await Send(exchange.request, exchange.answer);
    } catch (const base::Failure& failure) {
      exchange.failure = failure;
    }
    co_return exchange;
  }

  std::string function_;
  std::string name_;
  std::string protocol_;
  Requests requests_;
};

}  // namespace korval::tests
