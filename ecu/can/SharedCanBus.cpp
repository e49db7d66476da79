// SPDX-License-Identifier: MIT
#include "ecu/can/SharedCanBus.h"

#include <algorithm>
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

void SharedCanBus::Send(const CanFrame& frame, const std::shared_ptr<const Listener>& sender) {
  if (loss_) return;
  unconfirmed_.push_back(sender);  // the confirmation may come from inside
  bus_->Send(frame);
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
  unplugged_ = false;
  unconfirmed_.clear();
  bus_->SetEvents({[this](const CanFrame& frame) { FrameArrived(frame); }, [this] { Sent(); },
                   [this](CanBus::Error error, const std::string& text) { Failed(error, text); },
                   [this] { Recovered(); }});
}

void SharedCanBus::TryToOpen() {
  reopen_timer_->Stop();
  bus_.reset();
  try {
    Attach(open_());
  } catch (const base::Failure& failure) {
    return Failed(CanBus::Error::kUnplugged, failure.Description());
  }
  if (bus_->IsReady()) Recovered();
}

void SharedCanBus::FrameArrived(const CanFrame& frame) {
  if (loss_) Recovered();
  Tell([&frame](const Listener& listener) { listener.on_frame(frame); });
}

void SharedCanBus::Sent() {
  if (loss_) Recovered();
  if (unconfirmed_.empty()) return;  // a frame from before a loss
  const auto sender = unconfirmed_.front().lock();
  unconfirmed_.pop_front();
  const auto is_senders = [&sender](const auto& other) { return other.lock() == sender; };
  if (sender && std::none_of(unconfirmed_.begin(), unconfirmed_.end(), is_senders)) sender->on_sent();
}

void SharedCanBus::FrameDropped(const Trouble& trouble) {
  if (unconfirmed_.empty()) return;
  const auto sender = unconfirmed_.back().lock();
  unconfirmed_.pop_back();
  if (sender) sender->on_trouble(trouble);
}

void SharedCanBus::Failed(CanBus::Error error, const std::string& text) {
  const Trouble trouble{error, text};
  if (error == CanBus::Error::kQueueFull) return FrameDropped(trouble);
  if (IsLoss(error)) {
    unplugged_ = unplugged_ || error == CanBus::Error::kUnplugged;
    unconfirmed_.clear();
    loss_ = trouble;
    reopen_timer_->Start(kReopenInterval);
  }
  Tell([&trouble](const Listener& listener) { listener.on_trouble(trouble); });
}

void SharedCanBus::Recovered() {
  if (unplugged_) return;
  loss_.reset();
  reopen_timer_->Stop();
  Tell([](const Listener& listener) { listener.on_ready(); });
}

void SharedCanBus::Tell(const std::function<void(const Listener&)>& event) {
  const auto listeners = listeners_;  // an event may add one
  for (const auto& weak : listeners) {
    if (const auto listener = weak.lock()) event(*listener);
  }
}

}  // namespace korval::ecu
