// SPDX-License-Identifier: MIT
#include "ecu/can/SharedCanBus.h"

#include <utility>

#include "base/Failure.h"

namespace korval::ecu {
namespace {

bool IsLoss(CanBus::Error error) {
  return error == CanBus::Error::kBusOff || error == CanBus::Error::kUnplugged;
}

}  // namespace

SharedCanBus::SharedCanBus(const std::shared_ptr<base::EventLoop>& loop, Open open)
    : open_(std::move(open)), reopen_timer_(loop->CreateTimer([this] { TryToOpen(); })) {
  Attach(open_());
}

void SharedCanBus::Listen(const std::shared_ptr<const Listener>& listener) {
  std::erase_if(listeners_, [](const auto& weak) { return weak.expired(); });
  listeners_.push_back(listener);
}

void SharedCanBus::Send(const CanFrame& frame) {
  if (!loss_) bus_->Send(frame);
}

void SharedCanBus::Reopen(Open open) {
  open_ = std::move(open);
  TryToOpen();
}

void SharedCanBus::Close() {
  reopen_timer_->Stop();
  bus_.reset();
  loss_ = Trouble{CanBus::Error::kUnplugged, "the CAN interface was closed"};
}

void SharedCanBus::Attach(std::unique_ptr<CanBus> bus) {
  bus_ = std::move(bus);
  bus_->SetEvents({[this](const CanFrame& frame) { FrameArrived(frame); }, [this] { Sent(); },
                   [this](CanBus::Error error, const std::string& text) { Failed(error, text); },
                   [this] { Recovered(); }});
}

void SharedCanBus::TryToOpen() {
  bus_.reset();
  try {
    Attach(open_());
    loss_.reset();
  } catch (const base::Failure& failure) {
    Failed(CanBus::Error::kUnplugged, failure.Description());
  }
}

void SharedCanBus::FrameArrived(const CanFrame& frame) {
  Recovered();
  Tell([&frame](const Listener& listener) { listener.on_frame(frame); });
}

void SharedCanBus::Sent() {
  Recovered();
  Tell([](const Listener& listener) { listener.on_sent(); });
}

void SharedCanBus::Failed(CanBus::Error error, const std::string& text) {
  const Trouble trouble{error, text};
  if (IsLoss(error)) {
    loss_ = trouble;
    reopen_timer_->Start(kReopenInterval);
  }
  Tell([&trouble](const Listener& listener) { listener.on_trouble(trouble); });
}

void SharedCanBus::Recovered() {
  if (!loss_) return;
  loss_.reset();
  reopen_timer_->Stop();
}

void SharedCanBus::Tell(const std::function<void(const Listener&)>& event) {
  const auto listeners = listeners_;  // an event may add one
  for (const auto& weak : listeners) {
    if (const auto listener = weak.lock()) event(*listener);
  }
}

}  // namespace korval::ecu
