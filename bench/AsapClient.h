// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bench/Connection.h"

namespace korval::bench {

/// An ASAP3 client that costs as little as can be. Whatever the server refuses raises std::runtime_error.
class AsapClient {
 public:
  explicit AsapClient(int port) : connection_(port) {}

  /// Init and identify.
  void Begin() const;
  /// Selects a file and returns its number, by which the other calls name it.
  unsigned Select(const std::string& description, const std::string& section) const;
  void Acquire(unsigned lun, const std::vector<std::string>& names) const;
  void Exit() const;
  /// Sends a request and returns the whole reply, whose status is success.
  std::string Ask(std::string_view request) const;

  const Connection& Wire() const { return connection_; }

 private:
  Connection connection_;
};

}  // namespace korval::bench
