// SPDX-License-Identifier: MIT
// The program is stopped at every moment of an exchange on CAN.
#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "tests/ecu/can/CanBench.h"
#include "tests/support/Await.h"
#include "tests/support/SessionInput.h"
#include "tests/support/StoppableLoop.h"

namespace korval::ecu {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

/// What the driver has to say waits while the program is stopped; frames that it took go out.
class StoppableBus : public CanBus {
 public:
  StoppableBus(std::shared_ptr<tests::StoppableLoop> loop, std::unique_ptr<CanBus> bus)
      : loop_(std::move(loop)), bus_(std::move(bus)) {}

  void SetEvents(Events events) override {
    auto on_frame = std::move(events.on_frame);
    auto on_sent = std::move(events.on_sent);
    events.on_frame = [loop = loop_, on_frame = std::move(on_frame)](const CanFrame& frame) {
      loop->Deliver([on_frame, frame] { on_frame(frame); });
    };
    events.on_sent = [loop = loop_, on_sent = std::move(on_sent)] { loop->Deliver(on_sent); };
    bus_->SetEvents(std::move(events));
  }
  bool Send(const CanFrame& frame) override { return bus_->Send(frame); }
  bool IsReady() const override { return bus_->IsReady(); }

 private:
  std::shared_ptr<tests::StoppableLoop> loop_;
  std::unique_ptr<CanBus> bus_;
};

struct Row {
  const char* what;
  const char* request;
  const char* answer;
  const char* attributes;
  microseconds longest;
};

class BusyCanTest : public testing::TestWithParam<Row> {};

TEST_P(BusyCanTest, AStopAtAnyMomentLosesNothing) {
  const Row& row = GetParam();
  for (const milliseconds span : {milliseconds(5), milliseconds(24), milliseconds(120), milliseconds(250)}) {
    for (microseconds moment{0}; moment < row.longest; moment += row.longest / 60) {
      CanBench bench(std::string(CanBench::kIdentifiers) + row.attributes);
      const auto loop = std::make_shared<tests::StoppableLoop>(bench.loop);
      SessionEnvironment environment;
      environment.loop = loop;
      environment.port = "CAN:model:can0";
      environment.open_can_bus = [&](const std::string&, const std::string&, std::int32_t) {
        return std::make_unique<StoppableBus>(loop, bench.bus.Open());
      };
      bench.session = CreateSession(environment);
      tests::Await(bench.session->SetPort(bench.session->Port()));
      bench.session->OfferEcuFile(tests::EcuFileOf("abs.xml", base::LoadXmlText(bench.text, "abs.xml")));
      bench.loop->At(moment, [&] { loop->Stop(span); });
      ASSERT_EQ(bench.Send(row.request).substr(0, 4), row.answer)
          << "stopped after " << moment.count() << " us for " << span.count() << " ms: " << bench.description;
      tests::Await(bench.session->Close());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BusyCanTest,
    testing::Values(Row{"single", "2101", "6101", "", microseconds(900)},
                    Row{"long_answer", "2102", "6102", "", microseconds(3000)},
                    Row{"long_answer_in_blocks", "2102", "6102", "BlockSize='2' StMinMs='5'",
                        microseconds(40000)},
                    Row{"long_request",
                        "3B034142434445464748494A4142434445464748494A4142434445464748494A4142434445464748",
                        "7B03", "", microseconds(2500)}),
    [](const auto& row) { return row.param.what; });

}  // namespace
}  // namespace korval::ecu
