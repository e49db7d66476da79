// SPDX-License-Identifier: MIT
#include "ecu/service/ReadTroubleCodes.h"

#include <optional>
#include <utility>

#include "base/Failure.h"

namespace korval::ecu {
namespace {

// Tells a listener what a reading has brought so far.
class Telling {
 public:
  Telling(const TroubleCodeReading& reading, viator3::TroubleCodeListener& listener)
      : reading_(reading), listener_(listener) {}

  void Count() {
    if (!std::exchange(counted_, true)) listener_.Counted(static_cast<std::int32_t>(reading_.Announced()));
  }
  void NewCodes() {
    for (; told_ < reading_.Codes().size(); ++told_) {
      const TroubleCode& code = reading_.Codes()[told_];
      listener_.Read(static_cast<std::int32_t>(told_ + 1), {code.number, 2, code.status});
    }
  }

 private:
  const TroubleCodeReading& reading_;
  viator3::TroubleCodeListener& listener_;
  bool counted_ = false;
  std::size_t told_ = 0;
};

std::optional<base::Failure> TakeAnswer(TroubleCodeReading& reading, base::ByteView answer) {
  try {
    reading.Take(answer);
    return std::nullopt;
  } catch (const base::Failure& failure) {
    return failure;
  }
}

}  // namespace

base::Task<void> ReadTroubleCodes(std::unique_ptr<TroubleCodeReading> reading,
                                  viator3::TroubleCodeListener& listener, Ask ask) {
  Telling telling(*reading, listener);
  while (!reading->NextRequest().empty()) {
    base::ByteBuffer request(reading->NextRequest());
    const viator3::Exchange exchange = co_await ask(std::move(request));
    listener.Exchanged(exchange);
    if (exchange.failure) throw base::Failure(*exchange.failure);
    const auto cut_short = TakeAnswer(*reading, exchange.answer.View());
    if (!cut_short || reading->Announced() > 0) telling.Count();
    telling.NewCodes();
    if (cut_short) throw base::Failure(*cut_short);
  }
}

}  // namespace korval::ecu
