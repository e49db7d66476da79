// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/ByteBuffer.h"
#include "ecu/description/ItemPlan.h"

namespace korval::ecu {

/// The chosen items of one request, in the order in which they are answered: their values go straight from
/// the bytes of an answer into a reply.
class SinglesPlan {
 public:
  static constexpr std::size_t kBytesEach = 4;

  void Add(const ItemDescription& item);
  std::size_t Count() const { return items_.size(); }

  /// Appends each value as a big-endian IEEE single, or FF 00 00 00 where it is none. The answer may be of
  /// any length, and no part of the reply.
  void AppendTo(base::ByteBuffer& reply, base::ByteView answer) const;

 private:
  // All plain items lie within the answer.
  void PutValues(std::uint8_t* place, base::ByteView answer) const;
  // The answer may end anywhere.
  void PutCarefully(std::uint8_t* place, base::ByteView answer) const;

  std::vector<ItemPlan> items_;
  std::size_t plain_length_ = 0;  // from which all plain items can be read without a look at the end
};

}  // namespace korval::ecu
