// SPDX-License-Identifier: MIT
#include "ecu/description/SinglesPlan.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace korval::ecu {
namespace {

constexpr std::uint32_t kNoValue = 0xFF000000;

void Put(std::uint8_t* place, std::uint32_t bits) {
  place[0] = static_cast<std::uint8_t>(bits >> 24);
  place[1] = static_cast<std::uint8_t>(bits >> 16);
  place[2] = static_cast<std::uint8_t>(bits >> 8);
  place[3] = static_cast<std::uint8_t>(bits);
}

std::uint32_t BitsOf(const std::optional<float>& value) {
  return value ? std::bit_cast<std::uint32_t>(*value) : kNoValue;
}

}  // namespace

void SinglesPlan::Add(const ItemDescription& item) {
  items_.emplace_back(item);
  if (items_.back().IsPlain()) plain_length_ = std::max(plain_length_, items_.back().PlainLength());
}

void SinglesPlan::AppendTo(base::ByteBuffer& reply, base::ByteView answer) const {
  const std::size_t start = reply.Length();
  reply.SetLength(start + kBytesEach * items_.size());
  std::uint8_t* const place = reply.Data() + start;
  if (answer.size() >= plain_length_) {
    PutValues(place, answer);
  } else {
    PutCarefully(place, answer);
  }
}

void SinglesPlan::PutValues(std::uint8_t* place, base::ByteView answer) const {
  for (const ItemPlan& item : items_) {
    if (item.IsPlain()) {
      Put(place, item.SingleBits(answer.data()));
    } else {
      Put(place, BitsOf(item.Single(answer)));
    }
    place += kBytesEach;
  }
}

void SinglesPlan::PutCarefully(std::uint8_t* place, base::ByteView answer) const {
  for (const ItemPlan& item : items_) {
    Put(place, BitsOf(item.Single(answer)));
    place += kBytesEach;
  }
}

}  // namespace korval::ecu
