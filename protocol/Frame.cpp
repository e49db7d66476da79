// SPDX-License-Identifier: MIT
#include "protocol/Frame.h"

namespace korval::protocol {
namespace {

std::uint16_t SumOfWords(const base::ByteBuffer& frame, std::size_t end) {
  std::uint32_t sum = 0;
  const base::ByteView bytes = frame.View(0, end);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    sum += static_cast<std::uint32_t>(bytes[i] << 8 | bytes[i + 1]);
  }
  return static_cast<std::uint16_t>(sum);
}

}  // namespace

bool IsFrameLength(std::size_t length) { return length >= kShortestFrame && length % 2 == 0; }

bool IsChecksumValid(const base::ByteBuffer& frame) {
  const std::size_t checksum_offset = frame.Word(kLengthOffset) - std::size_t{2};
  return SumOfWords(frame, checksum_offset) == frame.Word(checksum_offset);
}

base::ByteView ParameterArea(const base::ByteBuffer& frame) {
  return frame.View(kStatusOffset, frame.Word(kLengthOffset) - kShortestFrame);
}

void FinishReply(base::ByteBuffer& frame, std::int32_t status, const base::ByteBuffer& data) {
  // A serial frame may have emptied the shared buffer while the command waited: the reply still has a header.
  frame.SetLength(kShortestFrame);
  frame.SetWord(kLengthOffset, static_cast<std::uint16_t>(data.Length() + 8));
  frame.SetWord(kStatusOffset, static_cast<std::uint16_t>(status));
  frame.Append(data.View());
  const std::uint16_t checksum = SumOfWords(frame, frame.Length());
  frame.SetLength(frame.Length() + 2);
  frame.SetWord(frame.Length() - 2, checksum);
}

}  // namespace korval::protocol
