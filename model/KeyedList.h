// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/Failure.h"

namespace korval::model {

/// An ordered list of shared elements, each of which may have a key. Positions count from 1. An unknown key
/// or position, and a key that is already present, raise Failure.
template <typename Element>
class KeyedList {
 public:
  using Pointer = std::shared_ptr<Element>;

  /// Adds at the end; an empty key is no key.
  void Append(Pointer element, const std::string& key = {}) {
    if (!key.empty() && !positions_.emplace(key, elements_.size()).second) {
      throw base::Failure("The key '" + key + "' is already in the list");
    }
    elements_.push_back(std::move(element));
  }

  std::int32_t Count() const noexcept { return static_cast<std::int32_t>(elements_.size()); }
  bool Contains(const std::string& key) const { return positions_.contains(key); }
  const Pointer& Item(std::int32_t position) const { return elements_[IndexOf(position)]; }
  const Pointer& Item(const std::string& key) const { return elements_[IndexOf(key)]; }
  void Remove(std::int32_t position) { RemoveAt(IndexOf(position)); }
  void Remove(const std::string& key) { RemoveAt(IndexOf(key)); }
  void Clear() noexcept {
    elements_.clear();
    positions_.clear();
  }

  auto begin() const noexcept { return elements_.begin(); }
  auto end() const noexcept { return elements_.end(); }

 private:
  std::size_t IndexOf(std::int32_t position) const {
    if (position < 1 || position > Count()) {
      throw base::Failure("The list has no position " + std::to_string(position));
    }
    return static_cast<std::size_t>(position) - 1;
  }

  std::size_t IndexOf(const std::string& key) const {
    const auto found = positions_.find(key);
    if (found == positions_.end()) throw base::Failure("The list has no key '" + key + "'");
    return found->second;
  }

  void RemoveAt(std::size_t index) {
    elements_.erase(elements_.begin() + static_cast<std::ptrdiff_t>(index));
    std::erase_if(positions_, [&](const auto& entry) { return entry.second == index; });
    for (auto& [key, position] : positions_) {
      if (position > index) --position;
    }
  }

  std::vector<Pointer> elements_;
  std::unordered_map<std::string, std::size_t> positions_;  // counted from 0
};

}  // namespace korval::model
