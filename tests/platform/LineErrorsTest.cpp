// SPDX-License-Identifier: MIT
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/LineErrors.h"

namespace korval::platform {
namespace {

using protocol::CommEvent;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(LineErrors, ReportsNothingWhileNothingHappens) {
  LineErrors errors;
  LineErrors::Counters counters;
  counters.breaks = 3;
  counters.cts = true;
  errors.Start(counters);
  EXPECT_THAT(errors.Since(counters), IsEmpty());
}

TEST(LineErrors, ReportsEachKindThatWasCountedOnce) {
  LineErrors errors;
  LineErrors::Counters counters;
  errors.Start(counters);
  counters.breaks = 2;
  counters.framing = 1;
  counters.parity = 1;
  counters.overrun = 1;
  counters.buffer_overrun = 1;
  EXPECT_THAT(errors.Since(counters), ElementsAre(CommEvent::kBreak, CommEvent::kFraming, CommEvent::kParity,
                                                  CommEvent::kOverrun, CommEvent::kReceiveBufferOverflow));
  EXPECT_THAT(errors.Since(counters), IsEmpty());
}

TEST(LineErrors, SeesACounterThatWrapsAround) {
  LineErrors errors;
  LineErrors::Counters counters;
  counters.framing = std::numeric_limits<std::int32_t>::max();
  errors.Start(counters);
  counters.framing = std::numeric_limits<std::int32_t>::min();
  EXPECT_THAT(errors.Since(counters), ElementsAre(CommEvent::kFraming));
}

TEST(LineErrors, ReportsAModemLineThatIsLostAndNotOneThatComes) {
  LineErrors errors;
  LineErrors::Counters counters;
  errors.Start(counters);
  counters.carrier = counters.cts = counters.dsr = true;
  EXPECT_THAT(errors.Since(counters), IsEmpty());
  EXPECT_THAT(errors.Since({}),
              ElementsAre(CommEvent::kCarrierDetectTimeout, CommEvent::kCtsTimeout, CommEvent::kDsrTimeout));
  EXPECT_THAT(errors.Since({}), IsEmpty());
}

TEST(LineErrors, TakesAPauseThatThePeerAsksForByCtsForNoError) {
  LineErrors errors;
  LineErrors::Counters counters;
  counters.cts = counters.dsr = true;
  errors.Start(counters);
  EXPECT_THAT(errors.Since({}, true), ElementsAre(CommEvent::kDsrTimeout));
  EXPECT_THAT(errors.Since(counters, true), IsEmpty());
}

TEST(LineErrors, KnowsADeviceWithoutCountersAndLines) {
  LineErrors::Counters counters;
  EXPECT_FALSE(LineErrors::Query(-1, counters));
}

}  // namespace
}  // namespace korval::platform
