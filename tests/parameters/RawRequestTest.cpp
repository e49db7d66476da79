// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "parameters/RawRequest.h"
#include "tests/support/Await.h"
#include "tests/support/CommandBench.h"
#include "tests/support/ErrorRecord.h"

namespace korval::parameters {
namespace {

using tests::FailureOf;

constexpr char kNoAnswer[] = "1 Unable to get value, Set parameter before to get value";

class RawRequestTest : public testing::Test {
 protected:
  RawRequestTest() {
    bench_.SelectEngine();
    file_ = bench_.files.ItemId(1);
    bench_.engine->sent.clear();
    Answer({0x61, 0x80, 0x41});
  }

  void Answer(const base::ByteBuffer& bytes, std::int32_t error = 0) {
    bench_.engine->on_send = [bytes, error](const base::ByteBuffer&, base::ByteBuffer& answer) {
      answer = bytes;
      if (error != 0) throw base::Failure(error, "the reason");
    };
  }
  std::string Send(const std::string& hex) {
    return FailureOf([&] { tests::Await(request_.Send(file_, hex)); });
  }
  std::string LastAnswer() {
    std::string answer;
    const std::string failure = FailureOf([&] { answer = RawRequest::LastAnswer(*file_); });
    return failure == "none" ? answer : failure;
  }

  tests::CommandBench bench_;
  std::shared_ptr<model::KorvAsapFile> file_;
  RawRequest request_{bench_.console, bench_.diagnosis};
};

TEST_F(RawRequestTest, AnswerIsKeptWithTheFile) {
  EXPECT_EQ(LastAnswer(), kNoAnswer);
  EXPECT_EQ(Send("1a80"), "none");
  EXPECT_THAT(bench_.engine->sent, testing::ElementsAre("1A80"));
  EXPECT_EQ(LastAnswer(), "618041");
  EXPECT_EQ(LastAnswer(), "618041");
  EXPECT_EQ(bench_.TakeTrace(), "");
}

TEST_F(RawRequestTest, ExchangeIsTracedWhileDebugging) {
  bench_.console.SetDebugTrace(true);
  Send("1A80");
  EXPECT_EQ(bench_.TakeTrace(), "kwprequest ok send:1A80 receive:618041\r\n");
}

TEST_F(RawRequestTest, TextThatIsNoRequestDropsTheLastAnswer) {
  for (const char* text : {"1A8", "ZZ", "1A 80", "", "0x1A"}) {
    Send("1A80");
    EXPECT_EQ(Send(text), "1 Invalid request") << text;
    EXPECT_EQ(LastAnswer(), kNoAnswer) << text;
  }
}

TEST_F(RawRequestTest, NegativeAnswerIsAnAnswer) {
  Answer({0x7F, 0x1A, 0x11}, 2001);
  bench_.console.SetDebugTrace(true);
  EXPECT_EQ(Send("1A99"), "none");
  EXPECT_EQ(LastAnswer(), "7F1A11");
  EXPECT_EQ(bench_.TakeTrace(), "kwprequest ok send:1A99 receive:7F1A11\r\n");
}

TEST_F(RawRequestTest, FailedRequestLeavesNoAnswerAndNoTrace) {
  Send("1A80");
  Answer({}, 2000);
  bench_.console.SetDebugTrace(true);
  EXPECT_EQ(Send("1A80"), "2000 the reason");
  EXPECT_EQ(LastAnswer(), kNoAnswer);
  EXPECT_EQ(bench_.TakeTrace(), "");
}

TEST_F(RawRequestTest, FunctionThatTheSessionDoesNotKnowKeepsItsNumber) {
  bench_.diagnosis.SetSession(std::make_shared<tests::FakeSession>());
  EXPECT_EQ(Send("1A80"), "2020 no ECU file for the function MOTOR");
}

}  // namespace
}  // namespace korval::parameters
