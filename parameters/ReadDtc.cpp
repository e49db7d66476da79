// SPDX-License-Identifier: MIT
#include "parameters/ReadDtc.h"

#include "base/Errand.h"
#include "base/Failure.h"
#include "diag/LinkErrors.h"
#include "parameters/EcuFunction.h"

namespace korval::parameters {
namespace {

constexpr std::size_t kFirstRecord = 2;
constexpr std::size_t kRecordLength = 3;

const base::ByteBuffer& AllGroups() {
  static const base::ByteBuffer request{0x17, 0xFF, 0x00};
  return request;
}

const base::ByteBuffer& Continuation() {
  static const base::ByteBuffer request{0x17, 0xFF, 0xFF};
  return request;
}

}  // namespace

std::int16_t ReadDtc::Read(model::KorvAsapFile& file) {
  const auto ecu = EcuFunction(diagnosis_, file);
  model::DtcStore& store = file.Dtcs();
  store.ClearFailures();
  if (!ecu->Initialised()) Initialise(*ecu);
  base::ByteBuffer answer = Send(*ecu, AllGroups());
  if (answer.Length() < kFirstRecord) {
    throw base::Failure(diag::kAnswerTooShort, "service 17 must answer at least 2 bytes");
  }
  const std::int16_t count = answer.At(1);
  store.InitFailures(count);
  std::size_t offset = kFirstRecord;
  for (std::int32_t i = 1; i <= count; ++i) {
    if (offset >= answer.Length()) {
      answer = Send(*ecu, Continuation());
      offset = kFirstRecord;
    }
    Keep(store, i, answer, offset);
    offset += kRecordLength;
  }
  return count;
}

void ReadDtc::Initialise(viator3::Ecu& ecu) {
  try {
    ecu.Initialise();
  } catch (const base::Failure& failure) {
    Trace("readdtc_get Error init(" + std::to_string(failure.Number()) + ") " + failure.Description());
    throw;
  }
  Trace("readdtc_get ECU Initialisation done");
}

base::ByteBuffer ReadDtc::Send(viator3::Ecu& ecu, const base::ByteBuffer& request) {
  base::Errand::RequireWanted();
  base::ByteBuffer answer;
  const auto exchange = [&] { return " send:" + request.ToHex() + " receive:" + answer.ToHex(); };
  try {
    ecu.Send(request, answer);
  } catch (const base::Failure& failure) {
    Trace("readdtc_get Error" + exchange());
    Trace("  Error(" + std::to_string(failure.Number()) + ") " + failure.Description());
    throw;
  }
  Trace("readdtc_get ok" + exchange());
  return answer;
}

void ReadDtc::Keep(model::DtcStore& store, std::int32_t index, const base::ByteBuffer& answer,
                   std::size_t offset) {
  if (offset + kRecordLength > answer.Length()) {
    throw base::Failure(diag::kAnswerTooShort,
                        "the answer of service 17 ends before DTC record " + std::to_string(index));
  }
  const std::uint16_t code = answer.Word(offset);
  const std::uint8_t status = answer.At(offset + 2);
  store.SetFailure(index, code, status);
  Trace("   failure " + std::to_string(index) + " = $" + base::HexText(answer.View(offset, 2)) +
        " status = $" + base::HexText(answer.View(offset + 2, 1)));
}

void ReadDtc::Trace(const std::string& text) {
  if (console_.DebugTrace()) console_.Line(text);
}

}  // namespace korval::parameters
