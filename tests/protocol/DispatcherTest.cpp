// SPDX-License-Identifier: MIT
#include <cstdint>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/Failure.h"
#include "host/trace/TextTerminal.h"
#include "protocol/Dispatcher.h"
#include "protocol/FieldCodec.h"
#include "protocol/Frame.h"
#include "protocol/Reply.h"
#include "tests/support/Await.h"
#include "tests/support/FakeServices.h"
#include "tests/support/FakeStatusView.h"

namespace korval::protocol {
namespace {

using base::ByteBuffer;
using State = SessionState::State;

constexpr State kAllStates[] = {State::kIdle, State::kInit, State::kIdentify, State::kFileSelected};
constexpr std::int32_t kHandlerStatus = 0x1234;

class DispatcherTest : public ::testing::Test {
 protected:
  /// Attaches a handler that notes its parameter area, appends AB CD and returns kHandlerStatus.
  void AttachRecorder(CommandCode code) {
    dispatcher_.Attach(code, [this](base::ByteView parameters, ByteBuffer& reply) {
      handled_.push_back(base::HexText(parameters));
      reply.Append(ByteBuffer{0xAB, 0xCD}.View());
      return kHandlerStatus;
    });
  }
  void AttachAll() {
    for (const auto code :
         {CommandCode::kSelectFile, CommandCode::kSetAcquisition, CommandCode::kGetParameter,
          CommandCode::kSetParameter, CommandCode::kGetOnlineValue, CommandCode::kExtendedGetParameter,
          CommandCode::kExtendedSetParameter})
      AttachRecorder(code);
  }

  std::int32_t Dispatch(std::int32_t code, const std::string& parameters_hex = "") {
    trace_.clear();
    log_.clear();
    handled_.clear();
    const ByteBuffer parameters = ByteBuffer::FromHex(parameters_hex);
    return tests::Await(dispatcher_.Dispatch(code, parameters.View(), reply_));
  }

  std::string trace_;
  host::TextTerminal terminal_{[this](std::string_view text) { trace_ += text; }};
  host::TraceConsole console_{terminal_};
  tests::CallLog log_;
  tests::FakeStatusView view_;
  SessionState state_{view_};
  tests::FakeServices services_{log_};
  Dispatcher dispatcher_{console_, state_, services_};
  std::vector<std::string> handled_;
  ByteBuffer reply_;
};

/// One row of the command table: which states it is allowed in, and how it is refused in the others.
struct Row {
  std::set<State> allowed;
  const char* parameters;
  const char* refusal;
  std::int32_t code;
  bool refusal_only_when_debugging;
};

const Row kAttachedRows[] = {
    {{State::kIdentify, State::kFileSelected},
     "0000",
     "select file receive without init and identify, not processed\r\n",
     3,
     false},
    {{State::kFileSelected}, "0000", "set parameter receive without file, not processed\r\n", 12, false},
    {{State::kFileSelected}, "0000", "Get parameter receive without file, not processed\r\n", 14, true},
    {{State::kFileSelected}, "0000", "set parameter receive without file, not processed\r\n", 15, true},
    {{State::kFileSelected}, "", "set parameter receive without file, not processed\r\n", 19, false},
    {{State::kFileSelected},
     "0000",
     "Extended get parameter receive without file, not processed\r\n",
     114,
     true},
    {{State::kFileSelected},
     "0000",
     "Extended set parameter receive without file, not processed\r\n",
     115,
     true},
};

TEST_F(DispatcherTest, EveryAttachedCommandIsRefusedOrHandledByStateAndTracedByDebugTrace) {
  AttachAll();
  for (const Row& row : kAttachedRows) {
    for (const State state : kAllStates) {
      for (const bool debug : {false, true}) {
        SCOPED_TRACE("code " + std::to_string(row.code) + " state " +
                     std::to_string(static_cast<int>(state)) + (debug ? " debug" : ""));
        state_.Set(state);
        console_.SetDebugTrace(debug);
        reply_ = {0x55, 0x55};  // what an earlier command left
        const std::int32_t status = Dispatch(row.code, row.parameters);
        if (row.allowed.count(state) != 0) {
          EXPECT_EQ(status, kHandlerStatus);
          EXPECT_EQ(handled_, std::vector<std::string>{row.parameters});
          EXPECT_EQ(reply_.ToHex(), "ABCD");
          EXPECT_EQ(trace_, "");
        } else {
          EXPECT_EQ(status, 0x2343);
          EXPECT_TRUE(handled_.empty());
          EXPECT_TRUE(reply_.Empty());
          EXPECT_EQ(trace_, debug || !row.refusal_only_when_debugging ? row.refusal : "");
        }
        EXPECT_EQ(state_.Current(), state);
        EXPECT_TRUE(log_.empty());
      }
    }
  }
}

TEST_F(DispatcherTest, ACommandWithoutHandlerIsUnknownInEveryState) {
  for (const std::int32_t code : {3, 12, 14, 15, 19, 114, 115}) {
    for (const State state : kAllStates) {
      state_.Set(state);
      EXPECT_EQ(Dispatch(code, "0102"), 0x5656) << code;
      EXPECT_EQ(trace_, "Error unknown cmd code=" + std::to_string(code) + "  data=0102\r\n");
      EXPECT_TRUE(reply_.Empty());
      EXPECT_EQ(state_.Current(), state);
    }
  }
}

TEST_F(DispatcherTest, AnyOtherCodeIsUnknownInEveryState) {
  AttachAll();
  for (const std::int32_t code : {0, 1, 4, 5, 11, 16, 18, 21, 49, 51, 113, 116, 1000, 32768, 65535}) {
    for (const State state : kAllStates) {
      state_.Set(state);
      EXPECT_EQ(Dispatch(code), 22102) << code;
      EXPECT_EQ(trace_, "Error unknown cmd code=" + std::to_string(code) + "  data=\r\n");
      EXPECT_TRUE(reply_.Empty());
      EXPECT_EQ(state_.Current(), state);
    }
  }
}

TEST_F(DispatcherTest, TheTraceOfAnUnknownCodeShowsTheParameterAreaInHexadecimal) {
  EXPECT_EQ(Dispatch(4, "00ABCDEF"), 22102);
  EXPECT_EQ(trace_, "Error unknown cmd code=4  data=00ABCDEF\r\n");
}

TEST_F(DispatcherTest, InitOpensTheSessionFromEveryState) {
  for (const State state : kAllStates) {
    state_.Set(state);
    EXPECT_EQ(Dispatch(2), 0);
    EXPECT_EQ(trace_, "init()\r\n");
    EXPECT_TRUE(reply_.Empty());
    EXPECT_EQ(state_.Current(), State::kInit);
    EXPECT_EQ(std::set<std::string>(log_.begin(), log_.end()),
              (std::set<std::string>{"CreateDiagnosisObject", "ClearAcquiredDataView"}));
    EXPECT_EQ(log_.size(), 2U);
  }
}

TEST_F(DispatcherTest, AFailedInitAnswersWhatTheDiagnosisPartWroteAndReturnsToIdle) {
  services_.create = [](ByteBuffer& reply) {
    AppendWord(reply, 1002);
    AppendString(reply, "cannot open");
    return false;
  };
  for (const State state : kAllStates) {
    state_.Set(state);
    EXPECT_EQ(Dispatch(2), 0xFFFF);
    EXPECT_EQ(reply_.ToHex(),
              "03EA"
              "000B"
              "63616E6E6F74206F70656E"
              "00");
    EXPECT_EQ(state_.Current(), State::kIdle);
    EXPECT_EQ(log_.back(), "ClearAcquiredDataView");
  }
}

TEST_F(DispatcherTest, IdentifyAnswersTheServersVersionAndNameInStateInitOnly) {
  state_.Set(State::kInit);
  EXPECT_EQ(Dispatch(20,
                     "0201"
                     "0005"
                     "42656E6368"
                     "00"),
            0);
  EXPECT_EQ(trace_, "identify(513,Bench)\r\n");
  EXPECT_EQ(reply_.ToHex(), "0201001F4B6F7276616C204173617033207365727665722056657273696F6E20322E3000");
  EXPECT_EQ(state_.Current(), State::kIdentify);
  EXPECT_EQ(view_.remote_system, "Remote system name : Bench Version 2.1");
  EXPECT_EQ(view_.session_status, "Status: Identify");
}

TEST_F(DispatcherTest, IdentifyIsRefusedInEveryOtherState) {
  for (const State state : {State::kIdle, State::kIdentify, State::kFileSelected}) {
    state_.Set(state);
    EXPECT_EQ(Dispatch(20, "0201000542656E636800"), 0x2343);
    EXPECT_EQ(trace_, "identify receive without init, not processed\r\n");
    EXPECT_TRUE(reply_.Empty());
    EXPECT_EQ(state_.Current(), state);
  }
}

TEST_F(DispatcherTest, SwitchingIsTracedAndAnsweredInEveryState) {
  for (const State state : kAllStates) {
    state_.Set(state);
    EXPECT_EQ(Dispatch(13, "FFFF"), 0);
    EXPECT_EQ(trace_, "switching offline/online(65535)\r\n");
    EXPECT_TRUE(reply_.Empty());
    EXPECT_EQ(state_.Current(), state);
  }
}

TEST_F(DispatcherTest, ExitEndsTheSessionFromEveryState) {
  for (const State state : kAllStates) {
    state_.Set(state);
    EXPECT_EQ(Dispatch(50), 0);
    EXPECT_EQ(trace_, "exit()\r\n");
    EXPECT_TRUE(reply_.Empty());
    EXPECT_EQ(state_.Current(), State::kIdle);
    EXPECT_EQ(log_, tests::CallLog{"EndSession"});
  }
}

TEST_F(DispatcherTest, CommandsWithoutParametersIgnoreThoseTheyGet) {
  EXPECT_EQ(Dispatch(2, "00010002"), 0);
  EXPECT_EQ(Dispatch(50, "00010002"), 0);
}

TEST_F(DispatcherTest, ASelectionThatRaisesAFailureLeavesTheState) {
  dispatcher_.Attach(CommandCode::kSelectFile, [](base::ByteView, ByteBuffer&) -> std::int32_t {
    throw base::Failure("select file error : x");
  });
  state_.Set(State::kIdentify);
  EXPECT_EQ(Dispatch(3, "0000"), 0xFFFF);
  EXPECT_EQ(state_.Current(), State::kIdentify);
}

TEST_F(DispatcherTest, ParametersThatEndEarlyAreAnErrorRecordWithCode1ThatNamesTheCommand) {
  const struct {
    std::int32_t code;
    const char* parameters;
    const char* command;
  } rows[] = {{13, "", "switching"},
              {13, "01", "switching"},
              {20, "", "identify"},
              {20, "0201", "identify"},
              {20, "02010005424242", "identify"},
              {20, "0201FFFF", "identify"}};
  for (const auto& row : rows) {
    state_.Set(State::kInit);
    EXPECT_EQ(Dispatch(row.code, row.parameters), 0xFFFF) << row.parameters;
    EXPECT_EQ(state_.Current(), State::kInit);
    std::size_t position = 0;
    EXPECT_EQ(ReadWord(reply_.View(), position), 1);
    const std::string message = ReadString(reply_.View(), position);
    EXPECT_EQ(position, reply_.Length());
    EXPECT_NE(message.find(row.command), std::string::npos) << message;
  }
}

TEST_F(DispatcherTest, AHandlersFailureBecomesAnErrorRecordWithCode1AndNothingElse) {
  dispatcher_.Attach(CommandCode::kGetParameter, [](base::ByteView, ByteBuffer& reply) -> std::int32_t {
    AppendWord(reply, 0x7777);
    throw base::Failure(2000, "no answer");
  });
  state_.Set(State::kFileSelected);
  EXPECT_EQ(Dispatch(14), 0xFFFF);
  EXPECT_EQ(reply_.ToHex(),
            "0001"
            "0009"
            "6E6F20616E73776572"
            "00");
  EXPECT_EQ(state_.Current(), State::kFileSelected);
}

TEST_F(DispatcherTest, AHandlersFailureIsTracedOnlyWithDebugTrace) {
  dispatcher_.Attach(CommandCode::kGetParameter,
                     [](base::ByteView, ByteBuffer&) -> std::int32_t { throw base::Failure("no answer"); });
  state_.Set(State::kFileSelected);
  Dispatch(14);
  EXPECT_EQ(trace_, "");
  console_.SetDebugTrace(true);
  Dispatch(14);
  EXPECT_EQ(trace_, "no answer\r\n");
}

TEST_F(DispatcherTest, NoFailureOfAnyKindLeavesDispatch) {
  state_.Set(State::kFileSelected);
  const std::vector<Dispatcher::Immediate> handlers = {
      [](base::ByteView, ByteBuffer&) -> std::int32_t { throw std::runtime_error("x"); },
      [](base::ByteView, ByteBuffer&) -> std::int32_t { throw std::out_of_range("x"); },
      [](base::ByteView, ByteBuffer&) -> std::int32_t { throw std::bad_alloc(); },
  };
  for (const auto& handler : handlers) {
    dispatcher_.Attach(CommandCode::kGetParameter, handler);
    EXPECT_EQ(Dispatch(14), 0xFFFF);
    EXPECT_EQ(reply_.Word(0), 1);
  }
}

TEST_F(DispatcherTest, AReplyNeverExceedsTheLongestFrame) {
  state_.Set(State::kFileSelected);
  dispatcher_.Attach(CommandCode::kGetParameter, [](base::ByteView, ByteBuffer&) -> std::int32_t {
    throw base::Failure(std::string(200000, 'x'));
  });
  EXPECT_EQ(Dispatch(14), 0xFFFF);
  EXPECT_EQ(reply_.Length(), kMaxReplyData);
  dispatcher_.Attach(CommandCode::kGetParameter, [](base::ByteView, ByteBuffer& reply) {
    reply.SetLength(200000);
    return 0;
  });
  Dispatch(14);
  EXPECT_LE(reply_.Length(), kMaxReplyData);
}

TEST_F(DispatcherTest, AHandlersStatusPassesUnchanged) {
  state_.Set(State::kFileSelected);
  for (const std::int32_t status : {0, -1, 0xFFFF, 1, 0x12345678}) {
    dispatcher_.Attach(CommandCode::kGetOnlineValue, [=](base::ByteView, ByteBuffer&) { return status; });
    EXPECT_EQ(Dispatch(19), status);
  }
}

TEST_F(DispatcherTest, AWholeSessionWalksThroughTheStates) {
  dispatcher_.Attach(CommandCode::kSelectFile, [this](base::ByteView, ByteBuffer& reply) {
    state_.Set(State::kFileSelected);
    AppendWord(reply, 1);
    return 0;
  });
  AttachRecorder(CommandCode::kGetOnlineValue);
  EXPECT_EQ(Dispatch(3, "0000"), 0x2343);
  EXPECT_EQ(Dispatch(2), 0);
  EXPECT_EQ(Dispatch(3, "0000"), 0x2343);  // after init, but before identify
  EXPECT_EQ(trace_, "select file receive without init and identify, not processed\r\n");
  EXPECT_EQ(Dispatch(20, "02010000"), 0);
  EXPECT_EQ(Dispatch(20, "02010000"), 0x2343);  // twice
  EXPECT_EQ(Dispatch(19), 0x2343);
  EXPECT_EQ(Dispatch(3, "0000"), 0);
  EXPECT_EQ(reply_.ToHex(), "0001");
  EXPECT_EQ(Dispatch(19), kHandlerStatus);
  EXPECT_EQ(Dispatch(50), 0);
  EXPECT_EQ(Dispatch(19), 0x2343);
}

}  // namespace
}  // namespace korval::protocol
