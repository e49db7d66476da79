// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "host/control/ManualReads.h"
#include "tests/support/CommandBench.h"

namespace korval::host {
namespace {

using protocol::CommandCode;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tests::Fields;

class ManualReadsTest : public ::testing::Test {
 protected:
  ManualReadsTest() {
    item_ = request_->AddAnswerItem("EngineSpeed", base::Variant(812.5));
    request_->AddAnswerItem("CoolantTemp", base::Variant(90));
  }

  // The client selects the file and chooses both values.
  void Acquire() {
    bench_.SelectEngine();
    bench_.Run(CommandCode::kSetAcquisition, Fields().Word(1).Word(100).Word(2).String("N").String("T"));
    bench_.TakeTrace();
  }
  std::string Cell(const tests::RecordingListView& view, std::size_t row, std::size_t column) {
    return view.rows.at(row).at(column);
  }

  tests::CommandBench bench_;
  std::shared_ptr<tests::FakeRequest> request_ = bench_.engine->AddRequest("READ");
  std::shared_ptr<tests::FakeDataItem> item_;
  ManualReads reads_{bench_.console,     bench_.diagnosis, bench_.files,    bench_.values,
                     bench_.acquisition, bench_.file_view, bench_.data_view};
};

TEST_F(ManualReadsTest, ReadDataExecutesTheRequestsAndShowsTheValues) {
  Acquire();
  reads_.ReadData();
  EXPECT_EQ(request_->executions, 1);
  EXPECT_EQ(Cell(bench_.data_view, 0, 2), "812.5");
  EXPECT_EQ(Cell(bench_.data_view, 1, 2), "90");
  EXPECT_EQ(bench_.TakeTrace(), "");
}

TEST_F(ManualReadsTest, ReadDataTracesAFailedRequestAndShowsTheOthersValues) {
  Acquire();
  request_->on_execute = [] { throw base::Failure(2000, "No answer from the ECU"); };
  reads_.ReadData();
  EXPECT_EQ(bench_.TakeTrace(), "Read data error : No answer from the ECU\r\n");
  EXPECT_EQ(Cell(bench_.data_view, 0, 2), "812.5");
}

TEST_F(ManualReadsTest, ReadDataWithoutAcquiredValuesIsAnError) {
  reads_.ReadData();
  EXPECT_EQ(bench_.TakeTrace(), "Read data error : The client has chosen no values for acquisition\r\n");
}

TEST_F(ManualReadsTest, ReadDataWhoseSessionEndsInItsWaitShowsNothing) {
  Acquire();
  request_->on_execute = [this] { bench_.EndSession(); };
  reads_.ReadData();
  EXPECT_EQ(bench_.TakeTrace(), "Read data error : The session was closed while it was read by hand\r\n");
  EXPECT_THAT(bench_.data_view.rows, IsEmpty());
}

TEST_F(ManualReadsTest, ASecondReadInsideTheWaitDoesNothing) {
  Acquire();
  bench_.engine->sent.clear();
  request_->on_execute = [this] {
    reads_.ReadData();
    reads_.ReadIdent();
  };
  reads_.ReadData();
  EXPECT_EQ(request_->executions, 1);
  EXPECT_THAT(bench_.engine->sent, IsEmpty());
  request_->on_execute = nullptr;
  reads_.ReadData();
  EXPECT_EQ(request_->executions, 2);
}

TEST_F(ManualReadsTest, ReadIdentShowsAndTracesTheIdentificationOfEveryFile) {
  bench_.SelectEngine();
  bench_.engine->on_send = [](const base::ByteBuffer&, base::ByteBuffer& answer) {
    answer = base::ByteBuffer{0x61, 0x80, 0x41};
  };
  bench_.engine->sent.clear();
  reads_.ReadIdent();
  EXPECT_THAT(bench_.engine->sent, ElementsAre("2180"));
  EXPECT_EQ(Cell(bench_.file_view, 0, 6), "618041");
  EXPECT_EQ(bench_.TakeTrace(), "Read Ecu Ident : MOTOR = 618041\r\n");
}

TEST_F(ManualReadsTest, ReadIdentShowsAPoweredOffEcu) {
  bench_.SelectEngine();
  bench_.engine->initialised = false;
  bench_.engine->on_initialise = [] { throw base::Failure(2000, "No answer from the ECU"); };
  reads_.ReadIdent();
  EXPECT_EQ(Cell(bench_.file_view, 0, 6), "ECU power off or missing");
}

TEST_F(ManualReadsTest, ReadIdentWithoutAFileIsAnError) {
  reads_.ReadIdent();
  EXPECT_EQ(bench_.TakeTrace(), "Read ident error : The client has selected no file\r\n");
}

TEST_F(ManualReadsTest, ReadIdentWhoseSessionEndsInItsWaitShowsNothing) {
  bench_.SelectEngine();
  bench_.engine->on_send = [this](const base::ByteBuffer&, base::ByteBuffer&) { bench_.EndSession(); };
  reads_.ReadIdent();
  EXPECT_THAT(bench_.file_view.rows, IsEmpty());
  EXPECT_THAT(bench_.TakeTrace(),
              ::testing::EndsWith("Read ident error : The session was closed while it was read by hand\r\n"));
}

}  // namespace
}  // namespace korval::host
