// SPDX-License-Identifier: MIT
#include "apps/ecu-sim/KLineStation.h"

#include <utility>

namespace korval::apps {

KLineStation::KLineStation(const std::shared_ptr<base::EventLoop>& loop,
                           const std::shared_ptr<const ecu::EcuDescription>& description,
                           const std::string& path, bool echo, std::shared_ptr<ecu::BusLog> log)
    : path_(path),
      log_(std::move(log)),
      line_(path, [this](base::ByteView bytes) { BytesArrived(bytes); }),
      output_(loop, [this](base::ByteView bytes) { line_.Write(bytes); }),
      ecu_(loop, description->Function(), std::make_shared<ecu::SimulatedEcu>(description, loop->Now()),
           [this](base::ByteView bytes) { Send(bytes); }) {
  ecu_.SetEcho(echo);
}

void KLineStation::BytesArrived(base::ByteView bytes) {
  if (log_) log_->Record(path_, ecu::BusLog::Direction::kReceived, bytes);
  ecu_.BytesArrived(bytes);
}

void KLineStation::Send(base::ByteView bytes) {
  if (log_) log_->Record(path_, ecu::BusLog::Direction::kSent, bytes);
  output_.Send(bytes, ecu_.Baud());
}

}  // namespace korval::apps
