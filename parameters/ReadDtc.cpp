// SPDX-License-Identifier: MIT
#include "parameters/ReadDtc.h"

#include "base/Failure.h"
#include "parameters/EcuFunction.h"

namespace korval::parameters {
namespace {

std::string HexDigits(std::uint32_t value, int bytes) {
  base::ByteBuffer digits;
  for (int i = bytes - 1; i >= 0; --i) digits.Append(static_cast<std::uint8_t>(value >> (8 * i)));
  return digits.ToHex();
}

// Keeps what is read with the file, and traces it while debugging.
class Keeper : public viator3::TroubleCodeListener {
 public:
  Keeper(host::TraceConsole& console, model::DtcStore& store) : console_(console), store_(store) {}

  std::int16_t Count() const { return count_; }

  void Exchanged(const viator3::Exchange& exchange) override {
    const std::string bytes = " send:" + exchange.request.ToHex() + " receive:" + exchange.answer.ToHex();
    if (!exchange.failure) return Trace("readdtc_get ok" + bytes);
    Trace("readdtc_get Error" + bytes);
    Trace("  Error(" + std::to_string(exchange.failure->Number()) + ") " + exchange.failure->Description());
  }
  void Counted(std::int32_t count) override {
    count_ = static_cast<std::int16_t>(count);
    store_.InitFailures(count);
  }
  void Read(std::int32_t index, const viator3::TroubleCode& code) override {
    store_.SetFailure(index, static_cast<std::int32_t>(code.code), code.status);
    Trace("   failure " + std::to_string(index) + " = $" + HexDigits(code.code, code.code_bytes) +
          " status = $" + HexDigits(code.status, 1));
  }

 private:
  void Trace(const std::string& text) {
    if (console_.DebugTrace()) console_.Line(text);
  }

  host::TraceConsole& console_;
  model::DtcStore& store_;
  std::int16_t count_ = 0;
};

}  // namespace

base::Task<std::int16_t> ReadDtc::Read(std::shared_ptr<model::KorvAsapFile> file) {
  const auto ecu = EcuFunction(diagnosis_, *file);
  file->Dtcs().ClearFailures();
  if (!ecu->Initialised()) co_await Initialise(ecu);
  Keeper keeper(console_, file->Dtcs());
  co_await ecu->ReadTroubleCodes(keeper);
  co_return keeper.Count();
}

base::Task<void> ReadDtc::Initialise(std::shared_ptr<viator3::Ecu> ecu) {
  try {
    co_await ecu->Initialise();
  } catch (const base::Failure& failure) {
    Trace("readdtc_get Error init(" + std::to_string(failure.Number()) + ") " + failure.Description());
    throw;
  }
  Trace("readdtc_get ECU Initialisation done");
}

void ReadDtc::Trace(const std::string& text) {
  if (console_.DebugTrace()) console_.Line(text);
}

}  // namespace korval::parameters
