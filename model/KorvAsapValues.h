// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "model/KeyedList.h"
#include "model/KorvAsapValue.h"

namespace korval::model {

/// The values chosen for acquisition, in the order in which they were named, repeats included.
class KorvAsapValues : private KeyedList<KorvAsapValue> {
 public:
  /// Repeats that are kept; more would only fill the memory.
  static constexpr std::int32_t kMostRepeats = 1 << 18;

  /// Raises Failure for a key that is present.
  std::shared_ptr<KorvAsapValue> Add(const std::string& value_name, std::int32_t lun_id,
                                     const std::string& korv_name, const std::string& key = {});

  using KeyedList::begin;
  using KeyedList::Clear;
  using KeyedList::Count;
  using KeyedList::end;
  using KeyedList::Item;
  using KeyedList::Remove;
};

}  // namespace korval::model
