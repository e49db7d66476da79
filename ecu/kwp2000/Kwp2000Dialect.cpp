// SPDX-License-Identifier: MIT
#include "ecu/kwp2000/Kwp2000Dialect.h"

#include "ecu/kwp2000/Names.h"
#include "ecu/kwp2000/Services.h"
#include "ecu/kwp2000/StatusOfTroubleCodes.h"

namespace korval::ecu {
namespace {

constexpr std::uint8_t kStartDiagnosticSession = 0x10;
constexpr std::uint8_t kTesterPresent = 0x3E;
constexpr std::uint8_t kStopCommunication = 0x82;

class Kwp2000Dialect : public Dialect {
 public:
  std::string NameOf(std::uint8_t service) const override { return ServiceName(service); }
  std::string RefusalText(std::uint8_t service, std::uint8_t code) const override {
    return NegativeAnswerText(service, code);
  }
  std::size_t RepeatedBytes(std::uint8_t service) const override { return ecu::RepeatedBytes(service); }
  bool IsReading(base::ByteView request) const override { return ecu::IsReading(request); }
  bool IsAnswered(base::ByteView request) const override { return ecu::IsAnswered(request); }
  bool EndsCommunication(std::uint8_t service) const override { return service == kStopCommunication; }
  base::ByteBuffer TesterPresent() const override { return {kTesterPresent}; }
  base::ByteBuffer StartOfSession(std::uint8_t session, std::optional<std::uint8_t> speed) const override {
    base::ByteBuffer request{kStartDiagnosticSession, session};
    if (speed) request.Append(*speed);
    return request;
  }
  base::ByteBuffer Identification() const override { return {0x21, 0x80}; }
  std::unique_ptr<TroubleCodeReading> ReadTroubleCodes() const override {
    return std::make_unique<StatusOfTroubleCodes>();
  }
};

}  // namespace

const Dialect& Kwp2000() {
  static const Kwp2000Dialect dialect;
  return dialect;
}

}  // namespace korval::ecu
