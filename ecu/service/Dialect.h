// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "base/ByteBuffer.h"
#include "ecu/link/ServiceNames.h"
#include "ecu/service/TroubleCodeReading.h"

namespace korval::ecu {

/// What one diagnostic protocol has of its own, where the exchange of requests and answers is the same for
/// all. Requests and answers are not empty. An implementation has no state, so that one serves every ECU.
class Dialect : public ServiceNames {
 public:
  /// How many bytes behind its service a positive answer repeats of the request.
  virtual std::size_t RepeatedBytes(std::uint8_t service) const = 0;
  /// Whether the request only reads, so that sending it once more changes nothing: neither in the ECU nor in
  /// what the next request gets.
  virtual bool IsReading(base::ByteView request) const = 0;
  /// Whether the ECU answers the request.
  virtual bool IsAnswered(base::ByteView request) const = 0;
  /// Whether a positive answer to the service ends the communication.
  virtual bool EndsCommunication(std::uint8_t service) const = 0;

  /// Keeps a diagnostic session open.
  virtual base::ByteBuffer TesterPresent() const = 0;
  /// Starts a diagnostic session, at another speed of the line where one is given.
  virtual base::ByteBuffer StartOfSession(std::uint8_t session, std::optional<std::uint8_t> speed) const = 0;
  /// Reads what the ECU says that it is.
  virtual base::ByteBuffer Identification() const = 0;
  /// Reads the trouble codes that the ECU holds.
  virtual std::unique_ptr<TroubleCodeReading> ReadTroubleCodes() const = 0;
};

}  // namespace korval::ecu
