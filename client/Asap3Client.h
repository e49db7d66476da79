// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/ByteBuffer.h"
#include "client/Channel.h"

namespace korval::client {

class RequestBuilder;
class ReplyReader;

struct ServerIdentity {
  std::uint16_t version;  // ASAP3 version, major times 256 plus minor
  std::string name;
};

/// The four numbers that answer a parameter.
template <typename Number>
struct Parameter {
  Number value;
  Number minimum;
  Number maximum;
  Number increment;
};

/// What an extended set writes. The alternative's index is the data type code on the wire: real, real8,
/// string.
using ExtendedValue = std::variant<float, double, std::string>;
/// What answers an extended get; nothing when the ECU's value has no type that travels.
using ExtendedAnswer = std::variant<std::monostate, Parameter<float>, Parameter<double>, std::string>;

/// One method a command. Each sends its request, waits for the reply while Qt's events go on, and raises
/// LinkError when none comes or it is damaged, ErrorReply when its status is not success, and Failure when
/// the arguments do not fit into a frame. A session goes Init, Identify, SelectFile, then the rest, then
/// Exit. One command at a time: none may be called from an event that runs while another waits.
class Asap3Client {
 public:
  Asap3Client(std::unique_ptr<Channel> channel, std::chrono::milliseconds timeout);

  void Init();
  ServerIdentity Identify(std::uint16_t version, const std::string& name);
  /// Gives the logical unit number by which the other commands name the file.
  std::uint16_t SelectFile(const std::string& description, const std::string& section, std::uint16_t address);
  void SetAcquisition(std::uint16_t lun, std::uint16_t scan_time_ms, const std::vector<std::string>& names);
  /// In the order in which they were first chosen; none for an item that has no value.
  std::vector<std::optional<float>> OnlineValues();
  Parameter<float> GetParameter(std::uint16_t lun, const std::string& name);
  void SetParameter(std::uint16_t lun, const std::string& name, float value);
  ExtendedAnswer ExtendedGet(std::uint16_t lun, const std::string& name);
  void ExtendedSet(std::uint16_t lun, const std::string& name, const ExtendedValue& value);
  void SwitchOffline(std::uint16_t mode);
  void Exit();

  /// Sends the bytes as given and gives the answer unchecked. Raises LinkError when none comes.
  base::ByteBuffer Send(base::ByteView frame);

 private:
  /// The reply, known to be a success.
  ReplyReader Ask(const RequestBuilder& request);

  std::unique_ptr<Channel> channel_;
  std::chrono::milliseconds timeout_;
};

}  // namespace korval::client
