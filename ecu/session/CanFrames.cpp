// SPDX-License-Identifier: MIT
#include "ecu/session/CanFrames.h"

#include <string>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"

namespace korval::ecu {
namespace {

constexpr std::size_t kLongestData = 8;

base::ByteBuffer ReadData(const std::string& hex, const ErrorTable& errors) {
  base::ByteBuffer data;
  try {
    data = base::ByteBuffer::FromHex(hex);
  } catch (const base::Failure& failure) {
    throw errors.MakeFailure(kValueRefused, "CAN data '" + hex + "': " + failure.Description());
  }
  if (data.Length() > kLongestData) {
    throw errors.MakeFailure(kValueRefused, "CAN data '" + hex + "': a frame has at most 8 bytes");
  }
  return data;
}

}  // namespace

std::vector<FrameToSend> ReadCanFrames(std::span<const viator3::CanFrame> frames, const ErrorTable& errors) {
  std::vector<FrameToSend> read;
  read.reserve(frames.size());
  for (const viator3::CanFrame& frame : frames)
    read.push_back({frame.identifier, ReadData(frame.data, errors)});
  return read;
}

}  // namespace korval::ecu
