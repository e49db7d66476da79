// SPDX-License-Identifier: MIT
#include "apps/ecu-sim/CanStation.h"

#include <utility>

#include "base/ByteBuffer.h"
#include "base/Failure.h"
#include "ecu/description/ItemEncoding.h"
#include "ecu/isotp/IsoTpParameters.h"

namespace korval::apps {
namespace {

ecu::IsoTpParameters ParametersOf(const ecu::FunctionDescription& function,
                                  const ecu::MessagingFile& messaging) {
  const auto parameters = ecu::IsoTpParameters::OfTester(
      function, function.Can().CompletedBy(messaging.TransportOf(function.name)));
  if (!parameters) {
    throw base::Failure("The CAN identifiers of " + function.name +
                        " are unknown: give RequestId and ResponseId in its ECU file, or --messaging with a "
                        "file that has a Diagnostic element for it");
  }
  return parameters->OfOtherSide();
}

}  // namespace

CanStation::CanStation(std::shared_ptr<base::EventLoop> loop,
                       std::shared_ptr<const ecu::EcuDescription> description, ecu::MessagingFile messaging,
                       ecu::SharedCanBus::Open open)
    : loop_(std::move(loop)),
      description_(std::move(description)),
      messaging_(std::move(messaging)),
      bus_(loop_, std::move(open)),
      values_(std::make_shared<ecu::SimulatedEcu>(description_, loop_->Now())),
      ecu_(loop_, values_, ParametersOf(description_->Function(), messaging_),
           [this](const ecu::CanFrame& frame) { bus_.Send(frame, listener_); }),
      listener_(MakeListener()) {
  bus_.Listen(listener_);
  for (const ecu::MessagingFile::Frame& frame : messaging_.frames) {
    if (frame.cycle.count() > 0) StartCycle(frame);
  }
}

// Trouble is for the tester to notice.
std::shared_ptr<const ecu::SharedCanBus::Listener> CanStation::MakeListener() {
  ecu::SharedCanBus::Listener listener;
  listener.on_frame = [this](const ecu::CanFrame& frame) { ecu_.FrameArrived(frame); };
  listener.on_sent = [this] { ecu_.FramesSent(); };
  listener.patience = ParametersOf(description_->Function(), messaging_).n_as;
  return std::make_shared<const ecu::SharedCanBus::Listener>(std::move(listener));
}

void CanStation::StartCycle(const ecu::MessagingFile::Frame& frame) {
  const std::size_t number = cycles_.size();
  cycles_.push_back(loop_->CreateTimer([this, &frame, number] {
    cycles_[number]->Start(frame.cycle);
    SendCyclic(frame);
  }));
  cycles_[number]->Start(frame.cycle);
}

void CanStation::SendCyclic(const ecu::MessagingFile::Frame& frame) {
  base::ByteBuffer bytes;
  bytes.SetLength(ecu::CanFrame::kMostBytes);
  values_->Fill(frame.items, loop_->Now(), bytes);
  if (frame.multiplexor) {
    ecu::EncodeClamped(frame.multiplexor->item, static_cast<double>(frame.multiplexor->raw), bytes);
  }
  bus_.Send({frame.identifier, bytes.View()}, nullptr);
}

}  // namespace korval::apps
