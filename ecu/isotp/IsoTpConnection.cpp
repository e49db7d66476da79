// SPDX-License-Identifier: MIT
#include "ecu/isotp/IsoTpConnection.h"

#include <algorithm>

namespace korval::ecu {
namespace {

using Time = std::optional<base::TimePoint>;

Time Earlier(const Time& one, const Time& other) {
  if (!one || !other) return one ? one : other;
  return std::min(*one, *other);
}

}  // namespace

void IsoTpConnection::Stop() {
  sender_.Stop();
  receiver_.Stop();
}

bool IsoTpConnection::FrameArrived(const CanFrame& frame, base::TimePoint now) {
  if (frame.identifier != parameters_.receive) return false;
  base::ByteView bytes = frame.Bytes();
  if (parameters_.receive_target) {
    if (bytes.empty() || bytes[0] != *parameters_.receive_target) return false;
    bytes = bytes.subspan(1);
  }
  const auto pdu = IsoTpPdu::Read(bytes, parameters_.ReceiveCapacity());
  if (!pdu) return false;
  if (pdu->type == IsoTpPdu::Type::kFlowControl) {
    sender_.FlowControlArrived(*pdu, now);
  } else {
    receiver_.FrameArrived(*pdu, now);
  }
  return true;
}

void IsoTpConnection::FramesSent(base::TimePoint now) {
  sender_.FrameSent(now);
  receiver_.FrameSent(now);
}

void IsoTpConnection::TimeElapsed(base::TimePoint now) {
  sender_.TimeElapsed(now);
  receiver_.TimeElapsed(now);
}

std::optional<CanFrame> IsoTpConnection::TakeFrame(base::TimePoint now) {
  if (const auto flow_control = receiver_.TakeFrame(now)) return FrameOf(flow_control->View());
  if (const auto frame = sender_.TakeFrame(now)) return FrameOf(frame->View());
  return std::nullopt;
}

CanFrame IsoTpConnection::FrameOf(base::ByteView pdu) const {
  CanFrame frame(parameters_.transmit, {});
  const auto append = [&frame](std::uint8_t byte) { frame.data[frame.length++] = byte; };
  if (parameters_.transmit_target) append(*parameters_.transmit_target);
  std::for_each(pdu.begin(), pdu.end(), append);
  while (parameters_.padding && frame.length < CanFrame::kMostBytes) append(*parameters_.padding);
  return frame;
}

std::optional<IsoTpError> IsoTpConnection::TakeError() {
  if (auto error = sender_.TakeError()) return error;
  return receiver_.TakeError();
}

std::optional<base::TimePoint> IsoTpConnection::Due() const {
  return Earlier(sender_.Due(), receiver_.Due());
}

std::optional<base::TimePoint> IsoTpConnection::Deadline() const {
  return Earlier(sender_.Deadline(), receiver_.Deadline());
}

}  // namespace korval::ecu
