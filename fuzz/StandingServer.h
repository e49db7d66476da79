// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "fuzz/FuzzServer.h"
#include "fuzz/Input.h"

namespace korval::fuzz {

/// A server with a file selected that serves many inputs, because building one and loading its file costs
/// far more than the commands under test. It is replaced when an input ended its session, and after
/// kInputsPerServer inputs, when a new client must still get one. So an input may depend on those before it:
/// a finding says how many the server had served, and the fuzzer's seed number brings all of them back.
class StandingServer {
 public:
  static constexpr int kInputsPerServer = 100;

  explicit StandingServer(std::string section);

  /// Plays one input. The console's debug trace, whose frame dumps cost more than most commands, is on for
  /// every fourth length of input.
  void Serve(base::ByteView bytes, const std::function<void(FuzzServer& server, Input input)>& play);

 private:
  void Start();

  std::string section_;
  std::unique_ptr<FuzzServer> server_;
  int inputs_served_ = 0;
};

}  // namespace korval::fuzz
