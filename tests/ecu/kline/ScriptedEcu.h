// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "KLineBench.h"

namespace korval::ecu {

/// Whatever a test wants to come back: at each request frame the ECU of the bench starts the communication
/// as usual, and says what the script has for the others.
class ScriptedEcu {
 public:
  struct Step {
    std::chrono::microseconds after_request;
    std::string bytes;
  };
  using Script = std::vector<Step>;

  ScriptedEcu(KLineBench& bench, Script script) : bench_(bench), script_(std::move(script)) {
    bench_.line->ecu_hears = [this](base::ByteView bytes) { BytesArrived(bytes); };
  }

 private:
  void BytesArrived(base::ByteView bytes) {
    bench_.ecu->BytesArrived(bytes);
    if (reader_.Add(bytes[0]) != FrameReader::Result::kFrame) return;
    if (reader_.Message()[0] == 0x81 || reader_.Message()[0] == 0x82) return;
    bench_.PullEcuOut();
    bench_.line->ecu_hears = [](base::ByteView) {};
    for (const Step& step : script_) {
      bench_.loop->At(step.after_request,
                      [line = bench_.line.get(), hex = step.bytes] { line->EcuWrites(hex); });
    }
  }

  KLineBench& bench_;
  Script script_;
  FrameReader reader_;
};

}  // namespace korval::ecu
