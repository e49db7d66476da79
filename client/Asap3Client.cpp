// SPDX-License-Identifier: MIT
#include "client/Asap3Client.h"

#include <bit>
#include <utility>

#include "client/ClientErrors.h"
#include "client/ReplyReader.h"
#include "client/RequestBuilder.h"

namespace korval::client {
namespace {

constexpr std::uint16_t kInit = 2;
constexpr std::uint16_t kSelectFile = 3;
constexpr std::uint16_t kSetAcquisition = 12;
constexpr std::uint16_t kSwitchOffline = 13;
constexpr std::uint16_t kGetParameter = 14;
constexpr std::uint16_t kSetParameter = 15;
constexpr std::uint16_t kOnlineValues = 19;
constexpr std::uint16_t kIdentify = 20;
constexpr std::uint16_t kExit = 50;
constexpr std::uint16_t kExtendedGet = 114;
constexpr std::uint16_t kExtendedSet = 115;

constexpr std::uint16_t kTypeReal = 0;
constexpr std::uint16_t kTypeReal8 = 1;
constexpr std::uint16_t kTypeString = 2;

/// Stands where an item without a value would have its real.
constexpr std::uint32_t kNoValue = 0xFF000000;

std::optional<float> OnlineValue(float real) {
  if (std::bit_cast<std::uint32_t>(real) == kNoValue) return std::nullopt;
  return real;
}

Parameter<float> ReadParameter(ReplyReader& reply) {
  return {reply.Real(), reply.Real(), reply.Real(), reply.Real()};
}

Parameter<double> ReadParameter8(ReplyReader& reply) {
  return {reply.Real8(), reply.Real8(), reply.Real8(), reply.Real8()};
}

/// Adds a value in its encoding.
struct Encoder {
  RequestBuilder& request;
  void operator()(float value) const { request.Real(value); }
  void operator()(double value) const { request.Real8(value); }
  void operator()(const std::string& value) const { request.String(value); }
};

}  // namespace

Asap3Client::Asap3Client(std::unique_ptr<Channel> channel, std::chrono::milliseconds timeout)
    : channel_(std::move(channel)), timeout_(timeout) {}

void Asap3Client::Init() { Ask(RequestBuilder(kInit)); }

ServerIdentity Asap3Client::Identify(std::uint16_t version, const std::string& name) {
  ReplyReader reply = Ask(RequestBuilder(kIdentify).Word(version).String(name));
  return {reply.Word(), reply.String()};
}

std::uint16_t Asap3Client::SelectFile(const std::string& description, const std::string& section,
                                      std::uint16_t address) {
  return Ask(RequestBuilder(kSelectFile).String(description).String(section).Word(address)).Word();
}

void Asap3Client::SetAcquisition(std::uint16_t lun, std::uint16_t scan_time_ms,
                                 const std::vector<std::string>& names) {
  RequestBuilder request(kSetAcquisition);
  request.Word(lun).Word(scan_time_ms).Word(static_cast<std::int64_t>(names.size()));
  for (const std::string& name : names) request.String(name);
  Ask(request);
}

std::vector<std::optional<float>> Asap3Client::OnlineValues() {
  ReplyReader reply = Ask(RequestBuilder(kOnlineValues));
  std::vector<std::optional<float>> values(reply.Word());
  for (std::optional<float>& value : values) value = OnlineValue(reply.Real());
  return values;
}

Parameter<float> Asap3Client::GetParameter(std::uint16_t lun, const std::string& name) {
  ReplyReader reply = Ask(RequestBuilder(kGetParameter).Word(lun).String(name));
  return ReadParameter(reply);
}

void Asap3Client::SetParameter(std::uint16_t lun, const std::string& name, float value) {
  Ask(RequestBuilder(kSetParameter).Word(lun).String(name).Real(value));
}

ExtendedAnswer Asap3Client::ExtendedGet(std::uint16_t lun, const std::string& name) {
  ReplyReader reply = Ask(RequestBuilder(kExtendedGet).Word(lun).String(name));
  if (reply.Remaining() == 0) return std::monostate{};
  const std::uint16_t type = reply.Word();
  switch (type) {
    case kTypeReal:
      return ReadParameter(reply);
    case kTypeReal8:
      return ReadParameter8(reply);
    case kTypeString:
      return reply.String();
    default:
      throw LinkError("The answer to '" + name + "' has the unknown data type " + std::to_string(type));
  }
}

void Asap3Client::ExtendedSet(std::uint16_t lun, const std::string& name, const ExtendedValue& value) {
  RequestBuilder request(kExtendedSet);
  request.Word(lun).String(name).Word(static_cast<std::int64_t>(value.index()));
  std::visit(Encoder{request}, value);
  Ask(request);
}

void Asap3Client::SwitchOffline(std::uint16_t mode) { Ask(RequestBuilder(kSwitchOffline).Word(mode)); }

void Asap3Client::Exit() { Ask(RequestBuilder(kExit)); }

base::ByteBuffer Asap3Client::Send(base::ByteView frame) {
  channel_->Send(frame);
  return channel_->Receive(timeout_);
}

ReplyReader Asap3Client::Ask(const RequestBuilder& request) {
  const base::ByteBuffer frame = request.Frame();
  ReplyReader reply(Send(frame.View()));
  reply.RequireAnswerTo(frame.Word(2));
  reply.RequireSuccess();
  return reply;
}

}  // namespace korval::client
