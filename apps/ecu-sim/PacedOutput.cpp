// SPDX-License-Identifier: MIT
#include "apps/ecu-sim/PacedOutput.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace korval::apps {
namespace {

constexpr std::int64_t kBitsPerByte = 10;  // with start and stop bit

}  // namespace

PacedOutput::PacedOutput(std::shared_ptr<base::EventLoop> loop, Write write)
    : loop_(std::move(loop)), write_(std::move(write)), timer_(loop_->CreateTimer([this] { SendDue(); })) {}

void PacedOutput::Send(base::ByteView bytes, std::int32_t baud) {
  if (pieces_.empty()) last_byte_ = std::max(last_byte_, loop_->Now());
  pieces_.push_back({base::ByteBuffer(bytes), base::Duration(std::chrono::seconds(kBitsPerByte)) / baud});
  SendDue();
}

// A timer is late by its nature: what has fallen due meanwhile goes out together.
void PacedOutput::SendDue() {
  const base::TimePoint now = loop_->Now();
  while (!pieces_.empty()) {
    Piece& piece = pieces_.front();
    std::size_t count = 0;
    while (piece.sent + count < piece.bytes.Length() && last_byte_ + piece.byte_time <= now) {
      last_byte_ += piece.byte_time;
      ++count;
    }
    if (count != 0) write_(piece.bytes.View(piece.sent, count));
    piece.sent += count;
    if (piece.sent < piece.bytes.Length()) {
      timer_->Start(std::chrono::ceil<std::chrono::microseconds>(last_byte_ + piece.byte_time - now));
      return;
    }
    pieces_.pop_front();
  }
}

}  // namespace korval::apps
