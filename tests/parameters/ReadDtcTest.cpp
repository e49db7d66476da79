// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "parameters/ReadDtc.h"
#include "tests/support/Await.h"
#include "tests/support/CommandBench.h"
#include "tests/support/ErrorRecord.h"

namespace korval::parameters {
namespace {

using testing::ElementsAre;
using tests::FailureOf;

class ReadDtcTest : public testing::Test {
 protected:
  ReadDtcTest() {
    bench_.SelectEngine();
    file_ = bench_.files.ItemId(1);
    bench_.engine->initialised = true;
    bench_.engine->sent.clear();
    bench_.engine->on_send = [this](const base::ByteBuffer&, base::ByteBuffer& answer) {
      answer = answers_.empty() ? base::ByteBuffer{} : answers_.front();
      if (!answers_.empty()) answers_.erase(answers_.begin());
      if (answers_.empty() && error_ != 0) throw base::Failure(error_, "the reason");
    };
  }

  std::string Read() {
    std::int16_t count = 0;
    const std::string failure = FailureOf([&] { count = tests::Await(read_.Read(file_)); });
    return failure == "none" ? std::to_string(count) : failure;
  }
  model::DtcStore& Store() { return file_->Dtcs(); }

  tests::CommandBench bench_;
  std::shared_ptr<model::KorvAsapFile> file_;
  std::vector<base::ByteBuffer> answers_;
  std::int32_t error_ = 0;  // raised by the last answer
  ReadDtc read_{bench_.console, bench_.diagnosis};
};

TEST_F(ReadDtcTest, RecordsOfOneAnswerAreStored) {
  answers_ = {{0x57, 0x02, 0x12, 0x34, 0x20, 0xD6, 0x78, 0xA0}};
  EXPECT_EQ(Read(), "2");
  EXPECT_THAT(bench_.engine->sent, ElementsAre("17FF00"));
  EXPECT_EQ(Store().dtccode(), 0x1234);
  EXPECT_EQ(Store().dtcstatus(), 0x20);
  EXPECT_EQ(Store().NextDtc(), 2);
  EXPECT_EQ(Store().dtccode(), 0xD678);
  EXPECT_EQ(Store().dtcstatus(), 0xA0);
  EXPECT_EQ(bench_.TakeTrace(), "");
}

TEST_F(ReadDtcTest, StepsAreTracedWhileDebugging) {
  bench_.console.SetDebugTrace(true);
  bench_.engine->initialised = false;
  answers_ = {{0x57, 0x01, 0x00, 0x0A, 0x05}};
  Read();
  EXPECT_EQ(bench_.TakeTrace(),
            "readdtc_get ECU Initialisation done\r\nreaddtc_get ok send:17FF00 receive:5701000A05\r\n"
            "   failure 1 = $000A status = $05\r\n");
}

TEST_F(ReadDtcTest, NoRecordsLeaveNothingToWalk) {
  answers_ = {{0x57, 0x00}};
  EXPECT_EQ(Read(), "0");
  EXPECT_EQ(FailureOf([&] { Store().dtccode(); }), "1 All DTC already read");
  EXPECT_EQ(FailureOf([&] { Store().NextDtc(); }), "1 All DTC already read");
}

TEST_F(ReadDtcTest, MissingRecordsAreAskedForByContinuation) {
  bench_.console.SetDebugTrace(true);
  answers_ = {{0x57, 0x03, 0x00, 0x01, 0x11}, {0x57, 0x03, 0x00, 0x02, 0x22}, {0x57, 0x03, 0x00, 0x03, 0x33}};
  EXPECT_EQ(Read(), "3");
  EXPECT_THAT(bench_.engine->sent, ElementsAre("17FF00", "17FFFF", "17FFFF"));
  Store().NextDtc();
  Store().NextDtc();
  EXPECT_EQ(Store().dtccode(), 3);
  EXPECT_EQ(bench_.TakeTrace(),
            "readdtc_get ok send:17FF00 receive:5703000111\r\n   failure 1 = $0001 status = $11\r\n"
            "readdtc_get ok send:17FFFF receive:5703000222\r\n   failure 2 = $0002 status = $22\r\n"
            "readdtc_get ok send:17FFFF receive:5703000333\r\n   failure 3 = $0003 status = $33\r\n");
}

TEST_F(ReadDtcTest, MostRecordsThatAByteCanCountAreRead) {
  base::ByteBuffer answer{0x57, 0xFF};
  answer.SetLength(2 + 3 * 255);
  answers_ = {answer};
  EXPECT_EQ(Read(), "255");
}

TEST_F(ReadDtcTest, AnswerShorterThanTwoBytesIs2002) {
  const std::string text = "2002 service 17 must answer at least 2 bytes";
  answers_ = {{0x57}};
  EXPECT_EQ(Read(), text);
  answers_ = {{}};
  EXPECT_EQ(Read(), text);
  EXPECT_EQ(FailureOf([&] { Store().dtccode(); }), "1 Read DTC before to get value");
}

TEST_F(ReadDtcTest, RecordCutShortEndsTheWalkAndKeepsWhatCame) {
  answers_ = {{0x57, 0x02, 0x12, 0x34, 0x20, 0x56, 0x78}};
  EXPECT_EQ(Read(), "2002 the answer of service 17 ends before DTC record 2");
  EXPECT_EQ(Store().dtccode(), 0x1234);
  EXPECT_EQ(Store().NextDtc(), 2);
  EXPECT_EQ(Store().dtccode(), 0);
}

TEST_F(ReadDtcTest, ContinuationThatBringsNothingEndsTheWalk) {
  answers_ = {{0x57, 0x02, 0x12, 0x34, 0x20}, {0x57, 0x02}};
  EXPECT_EQ(Read(), "2002 the answer of service 17 ends before DTC record 2");
  EXPECT_EQ(bench_.engine->sent.size(), 2U);
}

TEST_F(ReadDtcTest, CommandThatIsCalledOffAsksForNoContinuation) {
  answers_ = {{0x57, 0x02, 0x12, 0x34, 0x20}, {0x57, 0x02, 0x56, 0x78, 0x20}};
  base::Job job;
  const auto send = bench_.engine->on_send;
  bench_.engine->on_send = [&](const base::ByteBuffer& request, base::ByteBuffer& answer) {
    send(request, answer);
    job.CallOff();
  };
  tests::Awaited<std::int16_t> count;
  job.Start(tests::Keep(read_.Read(file_), count));
  EXPECT_THAT(bench_.engine->sent, ElementsAre("17FF00"));
}

TEST_F(ReadDtcTest, FailedContinuationEndsTheWalkAndKeepsWhatCame) {
  answers_ = {{0x57, 0x02, 0x12, 0x34, 0x20}, {}};
  error_ = 2000;
  EXPECT_EQ(Read(), "2000 the reason");
  EXPECT_EQ(Store().dtccode(), 0x1234);
}

TEST_F(ReadDtcTest, FailedSendIsTracedInTwoLinesWithItsBuffers) {
  bench_.console.SetDebugTrace(true);
  answers_ = {{0x7F, 0x17, 0x11}};
  error_ = 2001;
  EXPECT_EQ(Read(), "2001 the reason");
  EXPECT_EQ(bench_.TakeTrace(),
            "readdtc_get Error send:17FF00 receive:7F1711\r\n  Error(2001) the reason\r\n");
}

TEST_F(ReadDtcTest, FailedInitialisationSendsNothing) {
  bench_.console.SetDebugTrace(true);
  bench_.engine->initialised = false;
  bench_.engine->on_initialise = [] { throw base::Failure(2042, "refused"); };
  EXPECT_EQ(Read(), "2042 refused");
  EXPECT_EQ(bench_.TakeTrace(), "readdtc_get Error init(2042) refused\r\n");
  EXPECT_TRUE(bench_.engine->sent.empty());
}

TEST_F(ReadDtcTest, NewReadingForgetsTheOldRecords) {
  answers_ = {{0x57, 0x01, 0x12, 0x34, 0x20}};
  Read();
  answers_ = {{0x57}};
  Read();
  EXPECT_EQ(FailureOf([&] { Store().dtccode(); }), "1 Read DTC before to get value");
}

}  // namespace
}  // namespace korval::parameters
