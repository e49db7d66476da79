// SPDX-License-Identifier: MIT
// Which command is refused in which session state, and what is traced then.
#include <array>

#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::ElementsAre;

enum class State { kIdle, kInit, kIdentify, kFileSelected };
constexpr std::array<std::uint16_t, 14> kUnknownCodes = {0,  1,  4,   11,  16,  18,  21,
                                                         49, 51, 113, 116, 255, 256, 65535};
constexpr std::array kStates = {State::kIdle, State::kInit, State::kIdentify, State::kFileSelected};

struct Rule {
  std::uint16_t code;
  /// A request that, when it is not refused, leaves the state as it is.
  std::string request;
  State lowest;
  std::string refusal;
  bool only_with_debugging;
};

const std::vector<Rule>& Rules() {
  static const std::vector<Rule> rules = {
      {kSelectFile, SelectRequest("no such.xml", "X"), State::kIdentify,
       "select file receive without init and identify, not processed", false},
      {kSetAcquisition, AcquisitionRequest(9, {}), State::kFileSelected,
       "set parameter receive without file, not processed", false},
      {kGetParameter, GetRequest(9, "N"), State::kFileSelected,
       "Get parameter receive without file, not processed", true},
      {kSetParameter, SetRequest(9, "N", 1), State::kFileSelected,
       "set parameter receive without file, not processed", true},
      {kGetOnlineValue, Request(kGetOnlineValue), State::kFileSelected,
       "set parameter receive without file, not processed", false},
      {kExtendedGet, ExtendedGetRequest(9, "N"), State::kFileSelected,
       "Extended get parameter receive without file, not processed", true},
      {kExtendedSet, ExtendedSetRequest(9, "N", "1"), State::kFileSelected,
       "Extended set parameter receive without file, not processed", true},
  };
  return rules;
}

class RefusalTest : public ServerBench {
 protected:
  void Enter(const RawClient& client, State state) {
    Succeed(client, Request(kExit));
    if (state >= State::kInit) Succeed(client, Request(kInit));
    if (state >= State::kIdentify) Succeed(client, Request(kIdentify, Word(0x0201) + Text("Bench")));
    if (state == State::kFileSelected) Select(client, "engine.xml", "ENGINE_MAP");
    TakeTrace(client);
  }
  /// What was traced up to now, without the dumps of frames.
  Lines TakeTrace(const RawClient& client) {
    client.Ask(HarmlessRequest());
    Lines lines = server_->TraceUntil("switching offline/online(7)");
    lines.pop_back();
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("Byte "); });
    return lines;
  }
  void ExpectRules(bool debugging) {
    const RawClient client = Connect();
    for (const State state : kStates) {
      Enter(client, state);
      for (const Rule& rule : Rules()) {
        SCOPED_TRACE("command " + std::to_string(rule.code) + " in state " +
                     std::to_string(static_cast<int>(state)));
        const std::string reply = client.Ask(rule.request);
        const Lines trace = TakeTrace(client);
        if (state >= rule.lowest) {
          EXPECT_NE(StatusOf(reply), kNotProcessed);
          continue;
        }
        EXPECT_EQ(Hex(reply), Hex(Reply(rule.code, kNotProcessed)));
        if (rule.only_with_debugging && !debugging)
          EXPECT_EQ(trace, Lines());
        else
          EXPECT_EQ(trace, Lines({rule.refusal}));
      }
    }
  }
};

TEST_F(RefusalTest, EveryCommandInEveryState) {
  Start();
  ExpectRules(false);
}

TEST_F(RefusalTest, EveryCommandInEveryStateWithDebugging) {
  Start({"--debug"});
  ExpectRules(true);
}

TEST_F(RefusalTest, IdentifyIsAcceptedRightAfterInitOnly) {
  Start();
  const RawClient client = Connect();
  for (const State state : {State::kIdle, State::kIdentify, State::kFileSelected}) {
    SCOPED_TRACE(static_cast<int>(state));
    Enter(client, state);
    EXPECT_EQ(Hex(client.Ask(Request(kIdentify, Word(0x0201) + Text("Bench")))),
              Hex(Reply(kIdentify, kNotProcessed)));
    EXPECT_THAT(TakeTrace(client), ElementsAre("identify receive without init, not processed"));
  }
}

TEST_F(RefusalTest, ARefusedCommandLeavesTheState) {
  Start();
  const RawClient client = Connect();
  Enter(client, State::kInit);
  EXPECT_EQ(StatusOf(client.Ask(SelectRequest("engine.xml", "ENGINE_MAP"))), kNotProcessed);
  Succeed(client, Request(kIdentify, Word(0x0201) + Text("Bench")));
  EXPECT_EQ(StatusOf(client.Ask(GetRequest(1, "N"))), kNotProcessed);
  EXPECT_EQ(Select(client, "engine.xml", "ENGINE_MAP"), 1U);
}

TEST_F(RefusalTest, SwitchingAndExitAreAnsweredInEveryState) {
  Start();
  const RawClient client = Connect();
  for (const State state : kStates) {
    Enter(client, state);
    EXPECT_EQ(Hex(client.Ask(Request(kSwitching, Word(0xFFFF)))), Hex(Reply(kSwitching, kSuccess)));
    EXPECT_THAT(TakeTrace(client), ElementsAre("switching offline/online(65535)"));
    EXPECT_EQ(Hex(client.Ask(Request(kExit))), Hex(Reply(kExit, kSuccess)));
  }
}

TEST_F(RefusalTest, UnknownCodesAreAnsweredAndTracedInEveryState) {
  Start();
  const RawClient client = Connect();
  for (const State state : kStates) {
    Enter(client, state);
    for (const std::uint16_t code : kUnknownCodes) {
      SCOPED_TRACE(code);
      EXPECT_EQ(Hex(client.Ask(Request(code))), Hex(Reply(code, kUnknownCommand)));
      EXPECT_EQ(Hex(client.Ask(Request(code, FromHex("01AB00FF")))), Hex(Reply(code, kUnknownCommand)));
      const std::string text = "Error unknown cmd code=" + std::to_string(code) + "  data=";
      EXPECT_THAT(TakeTrace(client), ElementsAre(text, text + "01AB00FF"));
    }
  }
}

TEST_F(RefusalTest, ATruncatedIdentifyIsAnErrorRecordAndLeavesTheState) {
  Start();
  const RawClient client = Connect();
  Enter(client, State::kInit);
  for (const std::string& fields : {std::string(), Word(0x0201), Word(0x0201) + FromHex("0005 4142")}) {
    const std::string reply = client.Ask(Request(kIdentify, fields));
    EXPECT_EQ(StatusOf(reply), kError);
    EXPECT_EQ(ErrorNumberOf(reply), 1U);
    EXPECT_THAT(ErrorTextOf(reply), ::testing::HasSubstr("identify"));
  }
  Succeed(client, Request(kIdentify, Word(0x0201) + Text("Bench")));
}

TEST_F(RefusalTest, ATruncatedSwitchingIsAnErrorRecord) {
  Start();
  const std::string reply = Connect().Ask(Request(kSwitching));
  EXPECT_EQ(StatusOf(reply), kError);
  EXPECT_EQ(ErrorNumberOf(reply), 1U);
  EXPECT_THAT(ErrorTextOf(reply), ::testing::HasSubstr("switching"));
}

}  // namespace
}  // namespace korval::tests
