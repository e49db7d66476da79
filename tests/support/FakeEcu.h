// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "diag/viator3.h"
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
  void Initialise() override {
    ++initialisations;
    if (on_initialise) on_initialise();
    initialised = true;
  }
  void Reinitialise() override {
    ++reinitialisations;
    if (on_reinitialise) on_reinitialise();
  }
  void Send(const base::ByteBuffer& request, base::ByteBuffer& answer) override {
    sent.push_back(request.ToHex());
    if (on_send) on_send(request, answer);
  }
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
  void LoadMessaging(const std::string& path) override {
    messaging.push_back(path);
    if (on_load_messaging) on_load_messaging();
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
  std::string function_;
  std::string name_;
  std::string protocol_;
  Requests requests_;
};

}  // namespace korval::tests
