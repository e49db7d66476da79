// SPDX-License-Identifier: MIT
#include "tests/ecu/can/ModelCanBus.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "base/ByteBuffer.h"
#include "base/Failure.h"

namespace korval::tests {

using ecu::CanBus;
using ecu::CanFrame;

class ModelCanBus::Node : public CanBus {
 public:
  explicit Node(ModelCanBus& bus) : bus_(bus) { bus_.nodes_.push_back(this); }
  ~Node() override {
    std::erase(bus_.nodes_, this);
    std::erase_if(bus_.queue_, [this](const Queued& queued) { return queued.sender == this; });
  }
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  void SetEvents(Events events) override { events_ = std::move(events); }
  bool Send(const CanFrame& frame) override { return bus_.Enqueue(*this, frame); }
  bool IsReady() const override { return bus_.ready_; }
  const Events& Handlers() const { return events_; }

 private:
  ModelCanBus& bus_;
  Events events_;
};

std::unique_ptr<CanBus> ModelCanBus::Open() {
  if (!plugged_) throw base::Failure("the model adapter is unplugged, plug it in");
  ++opened;
  return std::make_unique<Node>(*this);
}

base::Duration ModelCanBus::TimeOf(const CanFrame& frame) const {
  // ISO 11898-1: start, arbitration, control, CRC, acknowledge, end and interframe space around the data.
  const std::int64_t bits = (frame.identifier.extended ? 67 : 47) + 8 * frame.length;
  return std::chrono::nanoseconds(bits * 1000000000 / bitrate_);
}

void ModelCanBus::Inject(const CanFrame& frame) { Deliver(frame, nullptr); }

void ModelCanBus::InjectHex(std::uint32_t identifier, const std::string& hex) {
  Inject(CanFrame({identifier, false}, base::ByteBuffer::FromHex(hex).View()));
}

bool ModelCanBus::Enqueue(Node& sender, const CanFrame& frame) {
  const auto is_senders = [&sender](const Queued& queued) { return queued.sender == &sender; };
  const auto queued = std::count_if(queue_.begin(), queue_.end(), is_senders);
  if (room_ && static_cast<std::size_t>(queued) >= *room_) return false;
  queue_.push_back({&sender, frame});
  if (queue_.size() == 1) Transmit();
  if (room_ && sender.Handlers().on_sent) sender.Handlers().on_sent();
  return true;
}

void ModelCanBus::Transmit() {
  if (queue_.empty() || silent_) return;
  timer_->Start(std::chrono::ceil<std::chrono::microseconds>(TimeOf(queue_.front().frame)));
}

void ModelCanBus::Complete() {
  if (queue_.empty()) return;
  Queued done = queue_.front();
  queue_.pop_front();
  log.push_back(FrameText(done.frame));
  times.push_back(loop_->Now());
  Transmit();
  if (!room_ && done.sender->Handlers().on_sent) done.sender->Handlers().on_sent();
  const bool lost = to_lose_ > 0 || (filter && !filter(done.frame));
  if (to_lose_ > 0) --to_lose_;
  if (!lost) Deliver(done.frame, done.sender);
}

void ModelCanBus::Deliver(const CanFrame& frame, const Node* sender) {
  const std::vector<Node*> nodes = nodes_;
  for (Node* node : nodes) {
    if (node != sender && node->Handlers().on_frame) node->Handlers().on_frame(frame);
  }
}

void ModelCanBus::RaiseError(CanBus::Error error) {
  static constexpr std::array kTexts{"bus off", "nobody acknowledges", "adapter unplugged",
                                     "transmit queue full"};
  queue_.clear();
  const std::vector<Node*> nodes = nodes_;
  for (Node* node : nodes) {
    if (node->Handlers().on_error)
      node->Handlers().on_error(error, kTexts.at(static_cast<std::size_t>(error)));
  }
}

void ModelCanBus::RaiseRecovered() {
  ready_ = true;
  const std::vector<Node*> nodes = nodes_;
  for (Node* node : nodes) {
    if (node->Handlers().on_recovered) node->Handlers().on_recovered();
  }
}

void ModelCanBus::Unplug() {
  plugged_ = false;
  RaiseError(CanBus::Error::kUnplugged);
}

std::string FrameText(const CanFrame& frame) {
  const std::uint32_t number = frame.identifier.number;
  std::string digits;
  for (int shift = frame.identifier.extended ? 28 : 8; shift >= 0; shift -= 4) {
    digits += "0123456789ABCDEF"[(number >> shift) & 0xF];
  }
  return digits + "#" + base::HexText(frame.Bytes());
}

}  // namespace korval::tests
