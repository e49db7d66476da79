// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "base/ByteBuffer.h"

namespace korval::fuzz {

/// The fuzzer's bytes, read from the front, so that a seed can be written by hand. What is missing reads as
/// zero.
class Input {
 public:
  explicit Input(base::ByteView bytes) : bytes_(bytes) {}
  Input(const std::uint8_t* data, std::size_t size) : bytes_(data, size) {}

  bool Empty() const { return bytes_.empty(); }
  std::uint8_t Byte() {
    if (bytes_.empty()) return 0;
    const std::uint8_t byte = bytes_.front();
    bytes_ = bytes_.subspan(1);
    return byte;
  }
  std::uint16_t Word() {
    const unsigned high = Byte();
    return static_cast<std::uint16_t>((high << 8) | Byte());
  }
  /// The next `count` bytes, or as many as there are.
  base::ByteView Take(std::size_t count) {
    const base::ByteView taken = bytes_.first(std::min(count, bytes_.size()));
    bytes_ = bytes_.subspan(taken.size());
    return taken;
  }
  base::ByteView Rest() { return Take(bytes_.size()); }

 private:
  base::ByteView bytes_;
};

inline std::string TextOf(base::ByteView bytes) { return {bytes.begin(), bytes.end()}; }

}  // namespace korval::fuzz
