// SPDX-License-Identifier: MIT
#include "ThermometerSession.h"

#include <chrono>
#include <cmath>
#include <utility>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"

namespace host_form {
namespace {

using korval::base::Failure;
using korval::base::Variant;
namespace hosted = korval::hosted;
using korval::kCanNetworkError;
using korval::kNegativeAnswer;
using korval::kNoEcuFile;
using korval::kReadOnly;
using korval::kUnknownName;

// Stands for the real sensor: some degrees around 20, up and down within a minute.
double ReadSensor() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  const double seconds = std::chrono::duration<double>(now).count();
  return 20 + 5 * std::sin(seconds / 60 * 2 * M_PI);
}

class Temperature : public hosted::DataItem {
 public:
  explicit Temperature(std::weak_ptr<hosted::Request> request) : request_(std::move(request)) {}

  void Read() { value_ = ReadSensor(); }

  const std::string& Name() const override { return name_; }
  Variant Value() const override { return value_; }
  std::string Text() const override { return value_.ToText(); }
  std::string Unit() const override { return "°C"; }
  void SetValue(const Variant&) override { throw Failure(kReadOnly, name_ + " can only be read"); }
  void SetText(const std::string&) override { throw Failure(kReadOnly, name_ + " can only be read"); }
  std::shared_ptr<hosted::Request> OwningRequest() const override { return request_.lock(); }

 private:
  std::string name_ = "Temperature";
  Variant value_;
  std::weak_ptr<hosted::Request> request_;
};

class Reading : public hosted::Request {
 public:
  static std::shared_ptr<Reading> Create() {
    auto reading = std::make_shared<Reading>();
    reading->temperature_ = std::make_shared<Temperature>(reading);
    reading->data_ = {reading->temperature_};
    return reading;
  }

  const std::string& Name() const override { return name_; }
  void Execute() override { temperature_->Read(); }
  const Items& Data() const override { return data_; }
  const Items& Parameters() const override { return parameters_; }

 private:
  std::string name_ = "READ_TEMPERATURE";
  std::shared_ptr<Temperature> temperature_;
  Items data_;
  Items parameters_;
};

}  // namespace

/// The one ECU function.
class Thermometer : public hosted::Ecu {
 public:
  Variant Get(const std::string& name) {
    const auto item = FindAnswerItem(name);
    if (!item) throw Failure(kUnknownName, "a thermometer has no " + name);
    item->OwningRequest()->Execute();
    return item->Value();
  }

  const std::string& Function() const override { return function_; }
  const std::string& Name() const override { return name_; }
  const std::string& Protocol() const override { return protocol_; }
  bool Initialised() const override { return true; }
  void Initialise() override {}
  void Reinitialise() override {}
  void Send(const korval::base::ByteBuffer&, korval::base::ByteBuffer&) override {
    throw Failure(kNegativeAnswer, "a thermometer understands no raw requests");
  }
  const Requests& RequestList() override { return requests_; }
  const std::vector<std::string>& ReferenceData() override { return reference_data_; }
  std::shared_ptr<hosted::DataItem> FindAnswerItem(const std::string& name) override {
    for (const auto& item : requests_.front()->Data()) {
      if (item->Name() == name) return item;
    }
    return nullptr;
  }
  void LoadMessaging(const std::string& path) override {
    throw Failure(kCanNetworkError, "a thermometer is on no CAN bus: " + path + " is of no use");
  }

 private:
  std::string function_ = "THERMOMETER";
  std::string name_ = "Thermometer";
  std::string protocol_ = "Sensor";
  Requests requests_{Reading::Create()};
  std::vector<std::string> reference_data_;
};

namespace {

class ThermometerInstance : public hosted::InstanceObject {
 public:
  explicit ThermometerInstance(std::shared_ptr<Thermometer> thermometer)
      : thermometer_(std::move(thermometer)) {}

  void SetProtocol(std::shared_ptr<hosted::Ecu>) override {}
  void SetNameResolver(NameResolver resolver) override { resolve_ = std::move(resolver); }
  Variant Get(const std::string& name) override { return thermometer_->Get(DataName(name)); }
  void Set(const std::string& name, const Variant&) override {
    throw Failure(kReadOnly, name + " can only be read");
  }

 private:
  std::string DataName(const std::string& name) const {
    const std::string resolved = resolve_ ? resolve_(name) : std::string();
    return resolved.empty() ? name : resolved;
  }

  std::shared_ptr<Thermometer> thermometer_;
  NameResolver resolve_;
};

}  // namespace

ThermometerSession::ThermometerSession() : thermometer_(std::make_shared<Thermometer>()) {}

std::shared_ptr<hosted::Ecu> ThermometerSession::EcuByFunction(const std::string& function) {
  if (function == thermometer_->Function()) return thermometer_;
  throw Failure(kNoEcuFile, "this session has the function THERMOMETER only, not " + function);
}

std::vector<std::shared_ptr<hosted::Ecu>> ThermometerSession::Ecus() const { return {thermometer_}; }

void ThermometerSession::SendFrames(const std::vector<korval::viator3::CanFrame>&) {
  throw Failure(kCanNetworkError, "a thermometer is on no CAN bus");
}

std::shared_ptr<hosted::InstanceObject> ThermometerSession::CreateInstance(const std::string&) {
  return std::make_shared<ThermometerInstance>(thermometer_);
}

}  // namespace host_form
