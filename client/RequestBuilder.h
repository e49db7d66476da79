// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>

#include "base/ByteBuffer.h"

namespace korval::client {

/// Builds one request frame: length, command code, fields in the order they are added, checksum. The client
/// has an encoder of its own, so that a test of the server does not lean on the server's.
class RequestBuilder {
 public:
  explicit RequestBuilder(std::uint16_t command);

  /// A number that does not fit into 16 bits raises Failure.
  RequestBuilder& Word(std::int64_t value);
  RequestBuilder& Real(float value);
  RequestBuilder& Real8(double value);
  /// UTF-8 text, sent in windows-1252. Raises Failure when it is longer than a frame.
  RequestBuilder& String(std::string_view text);

  /// The finished frame. Raises Failure when the fields exceed a frame.
  base::ByteBuffer Frame() const;

 private:
  void Append(std::uint64_t value, int bytes);

  base::ByteBuffer frame_;
};

}  // namespace korval::client
