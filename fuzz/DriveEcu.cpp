// SPDX-License-Identifier: MIT
#include "fuzz/DriveEcu.h"

#include <algorithm>
#include <array>
#include <limits>

#include "base/Failure.h"
#include "fuzz/Require.h"
#include "tests/support/Await.h"

namespace korval::fuzz {
namespace {

// A file may declare any number of them; the first ones show what there is to see.
constexpr std::size_t kMostRequests = 16;
constexpr std::size_t kMostItems = 32;

template <typename Step>
void MayRefuse(Step step) {
  try {
    step();
  } catch (const base::Failure& failure) {
    Require(!failure.Description().empty(), "a refusal says why");
  }
}

void WriteItem(viator3::DataItem& item) {
  static const std::array<base::Variant, 8> kValues{std::int32_t{-1},
                                                    1e308,
                                                    std::numeric_limits<double>::quiet_NaN(),
                                                    0.5F,
                                                    true,
                                                    "41 42",
                                                    "A text that is longer than most items have room for",
                                                    base::Null{}};
  for (const base::Variant& value : kValues) {
    MayRefuse([&] { item.SetValue(value); });
    MayRefuse([&] { item.SetText(value.ToText()); });
  }
}

void ReadItem(const viator3::DataItem& item) {
  const bool has_value = !item.Value().IsEmpty();
  const std::string text = item.Text();
  Require(has_value || text.empty(), "an item without a value has no text");
  item.Unit();
}

void DriveRequest(viator3::Request& request) {
  MayRefuse([&] { tests::Await(request.Execute()); });
  const std::size_t count = std::min(request.Data().size(), kMostItems);
  for (std::size_t i = 0; i < count; ++i) ReadItem(*request.Data()[i]);
  for (std::size_t i = 0; i < count; ++i) WriteItem(*request.Data()[i]);
  for (std::size_t i = 0; i < count; ++i) ReadItem(*request.Data()[i]);
  MayRefuse([&] { tests::Await(request.Execute()); });
}

}  // namespace

void DriveEcu(viator3::Ecu& ecu) {
  MayRefuse([&] { tests::Await(ecu.Initialise()); });
  MayRefuse([&] {
    const std::size_t count = std::min(ecu.RequestList().size(), kMostRequests);
    for (std::size_t i = 0; i < count; ++i) DriveRequest(*ecu.RequestList()[i]);
  });
  MayRefuse([&] { ecu.ReferenceData(); });
  for (const char* request : {"17FF00", "17FFFF", "14FF00", "2180", "3E", "21", "1081", "30"}) {
    MayRefuse([&] {
      base::ByteBuffer answer;
      tests::Await(ecu.Send(base::ByteBuffer::FromHex(request), answer));
    });
  }
}

}  // namespace korval::fuzz
