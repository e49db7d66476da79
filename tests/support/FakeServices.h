// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

#include "protocol/SessionServices.h"
#include "tests/support/CallLog.h"

namespace korval::tests {

/// The floors above the protocol, reduced to whether there is a diagnosis object. Logs the calls by name.
class FakeServices : public protocol::SessionServices {
 public:
  explicit FakeServices(CallLog& log) : log_(log) {}

  /// Stands in for the opening of the diagnostic session; succeeds unless told otherwise.
  std::function<bool(base::ByteBuffer& reply)> create = [](base::ByteBuffer&) { return true; };
  bool has_diagnosis_object = false;

  base::Task<bool> CreateDiagnosisObject(base::ByteBuffer& reply) override {
    log_.emplace_back("CreateDiagnosisObject");
    co_await base::Blocking([&] { has_diagnosis_object = create(reply); });
    co_return has_diagnosis_object;
  }
  void ClearAcquiredDataView() override { log_.emplace_back("ClearAcquiredDataView"); }
  void EndSession() override {
    log_.emplace_back("EndSession");
    has_diagnosis_object = false;
  }
  bool ReleaseForPowerRequest(bool close_host_session) override {
    log_.emplace_back(close_host_session ? "ReleaseForPowerRequest, host session too"
                                         : "ReleaseForPowerRequest, not a host session");
    return std::exchange(has_diagnosis_object, false);
  }

 private:
  CallLog& log_;
};

}  // namespace korval::tests
