// SPDX-License-Identifier: MIT
#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "ecu/kwp2000/Kwp2000Dialect.h"
#include "ecu/service/ServiceChannel.h"
#include "tests/support/Await.h"
#include "tests/support/ManualEventLoop.h"

namespace korval::ecu {
namespace {

using base::ByteBuffer;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;

// A link that does what the test says. Messages are logged in hexadecimal, with "connect" and "close".
class ScriptedLink : public MessageLink {
 public:
  explicit ScriptedLink(std::vector<std::string>& log) : log_(log) {}

  void SetEvents(Events events) override { events_ = std::move(events); }
  void Connect() override {
    log_.emplace_back("connect");
    if (on_connect) return on_connect();
    events_.on_connected();
  }
  void Send(base::ByteView message) override {
    log_.push_back(base::HexText(message));
    if (on_send) return on_send(base::HexText(message));
    events_.on_sent();
    const auto answer = answers.find(base::HexText(message));
    if (answer != answers.end()) Arrive(answer->second);
  }
  void Close() override { log_.emplace_back("close"); }
  LinkOffer Offer() const override {
    LinkOffer offer;
    offer.latency = latency;
    offer.longest_silence = longest_silence;
    offer.usual_repeats = usual_repeats;
    return offer;
  }
  bool Stands() const override { return stands; }

  void Arrive(const std::string& hex) { events_.on_message(ByteBuffer::FromHex(hex).View()); }
  void Fail(std::int32_t number) { events_.on_failure(number, "as scripted"); }
  void Connected() { events_.on_connected(); }

  std::function<void()> on_connect;
  std::function<void(const std::string&)> on_send;
  std::map<std::string, std::string> answers{{"2101", "6101AB"}, {"3E", "7E"}, {"1081", "5081"}};
  Milliseconds latency{0};
  base::Duration longest_silence = base::Duration::max();
  bool stands = true;
  int usual_repeats = 0;

 private:
  std::vector<std::string>& log_;
  Events events_;
};

class ServiceChannelTest : public testing::Test {
 protected:
  ServiceChannelTest() {
    function.name = "ENGINE";
    function.ecu = "Engine control";
    function.keep_alive = Milliseconds(0);
    function.timing.p2 = 50;
  }

  std::shared_ptr<ServiceChannel> Open() {
    auto owned = std::make_unique<ScriptedLink>(log);
    link = owned.get();
    channel = std::make_shared<ServiceChannel>(loop, std::move(owned), Kwp2000(), function,
                                               std::make_shared<const ErrorTable>());
    return channel;
  }

  // The number of the failure, 0 for an answer.
  std::int32_t Request(const std::string& hex = "2101") {
    return NumberOf([&] { tests::Await(channel->Request(ByteBuffer::FromHex(hex).View(), answer)); });
  }
  template <typename Step>
  std::int32_t NumberOf(Step step) {
    try {
      step();
      return 0;
    } catch (const base::Failure& failure) {
      description = failure.Description();
      return failure.Number();
    }
  }

  std::shared_ptr<tests::ManualEventLoop> loop = std::make_shared<tests::ManualEventLoop>();
  std::vector<std::string> log;
  FunctionDescription function;
  ScriptedLink* link = nullptr;
  std::shared_ptr<ServiceChannel> channel;
  ByteBuffer answer;
  std::string description;
};

TEST_F(ServiceChannelTest, AMessageThatTheLinkCannotSendIsTheRequestsFailureAndTheNextOneWorks) {
  Open();
  link->on_send = [](const std::string&) { throw base::Failure(kValueRefused, "cannot be coded"); };
  EXPECT_EQ(Request(), kValueRefused);
  EXPECT_EQ(description, "cannot be coded");
  link->on_send = nullptr;
  EXPECT_EQ(Request(), 0);
}

TEST_F(ServiceChannelTest, ATesterPresentThatTheLinkCannotSendHarmsNothing) {
  function.keep_alive = Milliseconds(2000);
  Open();
  EXPECT_EQ(Request(), 0);
  link->on_send = [](const std::string&) { throw base::Failure(kValueRefused, "cannot be coded"); };
  loop->Advance(seconds(3));
  link->on_send = nullptr;
  EXPECT_EQ(Request(), 0);
}

TEST_F(ServiceChannelTest, LinkThatFailsInTesterPresentIsReportedByItsOwnNumber) {
  for (const std::int32_t number : {kLinkLost, kCanNetworkError}) {
    function.keep_alive = Milliseconds(2000);
    Open();
    tests::Await(channel->Connect());
    link->on_send = [this, number](const std::string&) { link->Fail(number); };
    loop->Advance(milliseconds(2500));
    EXPECT_FALSE(channel->IsConnected());
    link->on_connect = [this, number] { link->Fail(number); };
    EXPECT_EQ(Request(), number);
    link->on_send = nullptr;
    link->on_connect = nullptr;
    EXPECT_EQ(Request(), 0);
  }
}

TEST_F(ServiceChannelTest, FirstRequestConnectsAndOpensTheSession) {
  function.session = 0x81;
  Open();
  EXPECT_FALSE(channel->IsConnected());
  EXPECT_EQ(Request(), 0);
  EXPECT_EQ(answer.ToHex(), "6101AB");
  EXPECT_TRUE(channel->IsConnected());
  EXPECT_EQ(Request(), 0);
  EXPECT_THAT(log, ElementsAre("connect", "1081", "2101", "2101"));
  EXPECT_EQ(loop->PendingEvents(), 0U);
}

TEST_F(ServiceChannelTest, ReconnectStartsTheCommunicationAnew) {
  Open();
  tests::Await(channel->Connect());
  tests::Await(channel->Connect());
  tests::Await(channel->Reconnect());
  EXPECT_THAT(log, ElementsAre("connect", "connect"));
}

TEST_F(ServiceChannelTest, AnswerMayComeLaterAndEventsRunMeanwhile) {
  Open();
  link->on_send = [this](const std::string&) {
    loop->At(milliseconds(49), [this] { link->Arrive("6101CD"); });
  };
  bool event = false;
  loop->At(milliseconds(10), [&] { event = true; });
  EXPECT_EQ(Request(), 0);
  EXPECT_EQ(answer.ToHex(), "6101CD");
  EXPECT_TRUE(event);
  EXPECT_EQ(loop->Now(), base::TimePoint(milliseconds(49)));
}

TEST_F(ServiceChannelTest, SilenceIs2000AfterP2AndTheNextRequestConnectsAnew) {
  Open();
  link->answers.clear();
  EXPECT_EQ(Request(), kNoAnswer);
  EXPECT_EQ(loop->Now(), base::TimePoint(milliseconds(50)));
  EXPECT_THAT(description, HasSubstr("Engine control does not answer readDataByLocalIdentifier"));
  EXPECT_FALSE(channel->IsConnected());
  link->answers["2101"] = "6101";
  EXPECT_EQ(Request(), 0);
  EXPECT_THAT(log, ElementsAre("connect", "2101", "connect", "2101"));
}

TEST_F(ServiceChannelTest, ReadingRequestIsSentAgainBeforeTheLinkCountsAsLost) {
  function.repeats = 2;
  Open();
  int times = 0;
  link->on_send = [&](const std::string&) {
    if (++times == 2) return link->Fail(kNoAnswer);
    if (times == 3) link->Arrive("6101AB");
  };
  EXPECT_EQ(Request(), 0);
  EXPECT_EQ(answer.ToHex(), "6101AB");
  EXPECT_EQ(loop->Now(), base::TimePoint(milliseconds(50)));
  EXPECT_THAT(log, ElementsAre("connect", "2101", "2101", "2101"));
}

TEST_F(ServiceChannelTest, ReadingRequestThatIsNeverAnsweredIs2000AfterItsRepeats) {
  function.repeats = 1;
  Open();
  link->on_send = [this](const std::string&) { link->Fail(kForeignAnswer); };
  EXPECT_EQ(Request(), kForeignAnswer);
  EXPECT_TRUE(channel->IsConnected());
  link->on_send = [](const std::string&) {};
  EXPECT_EQ(Request(), kNoAnswer);
  EXPECT_FALSE(channel->IsConnected());
  EXPECT_THAT(log, ElementsAre("connect", "2101", "2101", "2101", "2101"));
}

TEST_F(ServiceChannelTest, TheLinkSaysHowOftenUnlessTheFileDoes) {
  Open();
  link->usual_repeats = 3;
  link->answers.clear();
  EXPECT_EQ(Request(), kNoAnswer);
  EXPECT_THAT(log, ElementsAre("connect", "2101", "2101", "2101", "2101"));
  function.repeats = 0;
  Open();
  link->usual_repeats = 3;
  link->answers.clear();
  EXPECT_EQ(Request(), kNoAnswer);
  EXPECT_EQ(log.back(), "2101");
  EXPECT_EQ(*(log.end() - 2), "connect");
}

TEST_F(ServiceChannelTest, RequestThatChangesSomethingIsNeverRepeated) {
  function.repeats = 2;
  Open();
  tests::Await(channel->Connect());
  for (const std::string request : {"3B1005", "1082", "1101", "14FF00", "3101", "17FFFF"}) {
    tests::Await(channel->Connect());
    log.clear();
    EXPECT_EQ(Request(request), kNoAnswer) << request;
    EXPECT_THAT(log, ElementsAre(request));
  }
}

TEST_F(ServiceChannelTest, LinkThatNoLongerStandsIsNotAskedAgain) {
  function.repeats = 2;
  Open();
  tests::Await(channel->Connect());
  link->stands = false;
  link->on_send = [this](const std::string&) { link->Fail(kNoAnswer); };
  EXPECT_EQ(Request(), kNoAnswer);
  EXPECT_THAT(log, ElementsAre("connect", "2101"));
}

TEST_F(ServiceChannelTest, RequestWithoutAnAnswerByDesignEndsWhenItIsOut) {
  Open();
  EXPECT_EQ(Request("3E02"), 0);
  EXPECT_EQ(answer.ToHex(), "");
  EXPECT_EQ(NumberOf([&] { tests::Await(channel->Tell(ByteBuffer::FromHex("3B1005").View())); }), 0);
  EXPECT_EQ(loop->Now(), base::TimePoint(milliseconds(0)));
  EXPECT_TRUE(channel->IsConnected());
  EXPECT_THAT(log, ElementsAre("connect", "3E02", "3B1005"));
}

TEST_F(ServiceChannelTest, LateSilenceAfterARequestWithoutAnAnswerLosesNothing) {
  Open();
  EXPECT_EQ(Request("3E02"), 0);
  link->Fail(kNoAnswer);
  EXPECT_TRUE(channel->IsConnected());
  EXPECT_EQ(Request(), 0);
}

TEST_F(ServiceChannelTest, LatencyOfTheLinkIsGivenOnTopOfP2) {
  Open();
  link->latency = Milliseconds(200);
  link->answers.clear();
  EXPECT_EQ(Request(), kNoAnswer);
  EXPECT_EQ(loop->Now(), base::TimePoint(milliseconds(250)));
}

TEST_F(ServiceChannelTest, NegativeAnswerIs2001WithNamesAndIsHandedOver) {
  Open();
  link->answers["2101"] = "7F2131";
  EXPECT_EQ(Request(), kNegativeAnswer);
  EXPECT_EQ(description, "Negative answer: readDataByLocalIdentifier (21): requestOutOfRange (31)");
  EXPECT_EQ(answer.ToHex(), "7F2131");
  EXPECT_TRUE(channel->IsConnected());
}

TEST_F(ServiceChannelTest, ForeignAnswerAloneIs2003AndNotHandedOver) {
  Open();
  link->answers["2101"] = "6102AB";
  EXPECT_EQ(Request(), kForeignAnswer);
  EXPECT_THAT(description, HasSubstr("6102AB"));
  EXPECT_TRUE(answer.Empty());
  EXPECT_TRUE(channel->IsConnected());
}

TEST_F(ServiceChannelTest, PendingKeepsTheWaitOpen) {
  Open();
  link->on_send = [this](const std::string&) {
    loop->At(milliseconds(40), [this] { link->Arrive("7F2178"); });
    loop->At(milliseconds(4000), [this] { link->Arrive("6101EE"); });
  };
  EXPECT_EQ(Request(), 0);
  EXPECT_EQ(answer.ToHex(), "6101EE");
  EXPECT_EQ(loop->Now(), base::TimePoint(milliseconds(4000)));
}

TEST_F(ServiceChannelTest, EcuThatIsForeverPendingIsGivenUp) {
  Open();
  link->on_send = [this](const std::string&) {
    for (int second = 1; second < 100; ++second)
      loop->At(seconds(second), [this] { link->Arrive("7F2178"); });
    link->Arrive("7F2178");
  };
  EXPECT_EQ(Request(), kNoAnswer);
  EXPECT_EQ(loop->Now(), base::TimePoint(seconds(60)));
}

TEST_F(ServiceChannelTest, LateAnswerIsNotTakenForTheNextRequest) {
  Open();
  link->on_send = [this](const std::string& message) {
    if (message == "2101") return;
    link->Arrive("6101AB");
    link->Arrive("6102CD");
    link->Arrive("6102EF");
  };
  EXPECT_EQ(Request("2101"), kNoAnswer);
  EXPECT_EQ(Request("2102"), 0);
  EXPECT_EQ(answer.ToHex(), "6102CD");
}

TEST_F(ServiceChannelTest, MessageThatNobodyAskedForIsIgnored) {
  Open();
  tests::Await(channel->Connect());
  link->Arrive("6101AB");
  EXPECT_EQ(Request("2102"), kNoAnswer);
}

TEST_F(ServiceChannelTest, FailureOfTheLinkDuringARequestIsPassedOn) {
  Open();
  tests::Await(channel->Connect());
  link->on_send = [this](const std::string&) { link->Fail(kCanNetworkError); };
  EXPECT_EQ(Request(), kCanNetworkError);
  EXPECT_THAT(description, HasSubstr("as scripted"));
  EXPECT_FALSE(channel->IsConnected());
}

TEST_F(ServiceChannelTest, NumbersThatDoNotMeanALostLinkKeepTheConnection) {
  Open();
  link->on_send = [this](const std::string&) { link->Fail(2044); };
  EXPECT_EQ(Request(), 2044);
  EXPECT_TRUE(channel->IsConnected());
}

TEST_F(ServiceChannelTest, LinkLostBetweenRequestsIsConnectedAnew) {
  Open();
  tests::Await(channel->Connect());
  link->Fail(kLinkLost);
  EXPECT_FALSE(channel->IsConnected());
  EXPECT_EQ(Request(), 0);
}

TEST_F(ServiceChannelTest, FailedStartIsPassedOnAndTriedAgain) {
  Open();
  link->on_connect = [this] { link->Fail(kNoAnswer); };
  EXPECT_EQ(NumberOf([&] { tests::Await(channel->Connect()); }), kNoAnswer);
  EXPECT_EQ(Request(), kNoAnswer);
  link->on_connect = nullptr;
  EXPECT_EQ(Request(), 0);
  EXPECT_THAT(log, ElementsAre("connect", "connect", "connect", "2101"));
}

TEST_F(ServiceChannelTest, StartMayTakeItsTime) {
  Open();
  link->on_connect = [this] { loop->At(seconds(3), [this] { link->Connected(); }); };
  tests::Await(channel->Connect());
  EXPECT_EQ(loop->Now(), base::TimePoint(seconds(3)));
  EXPECT_TRUE(channel->IsConnected());
}

TEST_F(ServiceChannelTest, StartThatNeverEndsIsGivenUp) {
  Open();
  link->on_connect = [] {};
  EXPECT_EQ(NumberOf([&] { tests::Await(channel->Connect()); }), kNoAnswer);
  link->on_connect = nullptr;
  EXPECT_EQ(Request(), 0);
  EXPECT_THAT(log, ElementsAre("connect", "close", "connect", "2101"));
}

TEST_F(ServiceChannelTest, SilenceThatTheEcuDoesNotBearEndsTheCommunication) {
  Open();
  link->longest_silence = seconds(5);
  EXPECT_EQ(Request(), 0);
  loop->Advance(seconds(5));
  EXPECT_TRUE(channel->IsConnected());
  EXPECT_EQ(Request(), 0);
  loop->Advance(milliseconds(5001));
  EXPECT_FALSE(channel->IsConnected());
  EXPECT_EQ(Request(), 0);
  EXPECT_THAT(log, ElementsAre("connect", "2101", "2101", "connect", "2101"));
}

TEST_F(ServiceChannelTest, AnswerThatTakesLongIsNoSilence) {
  Open();
  link->longest_silence = seconds(5);
  link->on_send = [this](const std::string& message) {
    if (message == "2102") return link->Arrive("6102AB");
    for (int second = 0; second < 20; second += 4) {
      loop->At(seconds(second), [this] { link->Arrive("7F2178"); });
    }
    loop->At(seconds(20), [this] { link->Arrive("6101AB"); });
  };
  ByteBuffer inner;
  loop->At(seconds(15), [&] { tests::Await(channel->Request(ByteBuffer{0x21, 0x02}.View(), inner)); });
  EXPECT_EQ(Request(), 0);
  EXPECT_EQ(inner.ToHex(), "6102AB");
  loop->Advance(seconds(4));
  EXPECT_EQ(Request("2102"), 0);
  EXPECT_THAT(log, ElementsAre("connect", "2101", "2102", "2102"));
}

TEST_F(ServiceChannelTest, TesterPresentComesInHalfTheSilenceThatTheEcuBears) {
  function.keep_alive = Milliseconds(2000);
  Open();
  link->longest_silence = seconds(10);
  tests::Await(channel->Connect());
  loop->Advance(milliseconds(2000));
  EXPECT_THAT(log, ElementsAre("connect", "3E"));
  // The answer to accessTimingParameters has changed it.
  link->on_send = [this](const std::string&) {
    link->longest_silence = seconds(1);
    link->Arrive("C303");
  };
  EXPECT_EQ(Request("830300020A0400"), 0);
  link->on_send = nullptr;
  loop->Advance(milliseconds(1500));
  EXPECT_THAT(log, ElementsAre("connect", "3E", "830300020A0400", "3E", "3E", "3E"));
}

TEST_F(ServiceChannelTest, StopCommunicationEndsItWhoeverAskedForIt) {
  Open();
  link->answers["82"] = "C2";
  EXPECT_EQ(Request("82"), 0);
  EXPECT_FALSE(channel->IsConnected());
  EXPECT_EQ(Request(), 0);
  link->answers["2102"] = "C2";
  EXPECT_EQ(Request("2102"), kCommunicationEnded);
  EXPECT_FALSE(channel->IsConnected());
  EXPECT_EQ(Request(), 0);
  EXPECT_THAT(log, ElementsAre("connect", "82", "connect", "2101", "2102", "connect", "2101"));
}

TEST_F(ServiceChannelTest, RefusedSessionIs2042AndUnansweredOne2000) {
  function.session = 0x81;
  Open();
  link->answers["1081"] = "7F1012";
  EXPECT_EQ(Request(), kInitialisationRefused);
  EXPECT_THAT(description,
              HasSubstr("startDiagnosticSession (10): subFunctionNotSupported-invalidFormat (12)"));
  link->answers.erase("1081");
  EXPECT_EQ(Request(), kNoAnswer);
  EXPECT_FALSE(channel->IsConnected());
}

TEST_F(ServiceChannelTest, TesterPresentIsSentAfterSilenceOnly) {
  function.keep_alive = Milliseconds(2000);
  Open();
  tests::Await(channel->Connect());
  loop->Advance(milliseconds(1500));
  EXPECT_EQ(Request(), 0);
  loop->Advance(milliseconds(1999));
  EXPECT_THAT(log, ElementsAre("connect", "2101"));
  loop->Advance(milliseconds(1));
  EXPECT_THAT(log, ElementsAre("connect", "2101", "3E"));
  loop->Advance(milliseconds(4000));
  EXPECT_THAT(log, ElementsAre("connect", "2101", "3E", "3E", "3E"));
}

TEST_F(ServiceChannelTest, RequestWaitsForTheAnswerToTesterPresent) {
  function.keep_alive = Milliseconds(2000);
  Open();
  tests::Await(channel->Connect());
  link->on_send = [this](const std::string& message) {
    loop->At(milliseconds(30), [this, message] { link->Arrive(message == "3E" ? "7E" : "6101AB"); });
  };
  loop->Advance(milliseconds(2000));
  EXPECT_EQ(Request(), 0);
  EXPECT_EQ(answer.ToHex(), "6101AB");
  EXPECT_EQ(loop->Now(), base::TimePoint(milliseconds(2060)));
}

TEST_F(ServiceChannelTest, UnansweredTesterPresentIsReportedOnceByTheNextRequest) {
  function.keep_alive = Milliseconds(2000);
  Open();
  tests::Await(channel->Connect());
  link->answers.erase("3E");
  loop->Advance(milliseconds(2050));
  EXPECT_FALSE(channel->IsConnected());
  EXPECT_EQ(Request(), kTesterPresentUnanswered);
  EXPECT_EQ(Request(), 0);
}

TEST_F(ServiceChannelTest, TesterPresentUnansweredInsideARequestIsMadeGoodByTheRequest) {
  function.keep_alive = Milliseconds(2000);
  Open();
  tests::Await(channel->Connect());
  link->answers.erase("3E");
  loop->Advance(milliseconds(2010));
  EXPECT_EQ(Request(), 0);
  EXPECT_EQ(Request(), 0);
  EXPECT_THAT(log, ElementsAre("connect", "3E", "connect", "2101", "2101"));
}

TEST_F(ServiceChannelTest, RefusedTesterPresentShowsThatTheEcuIsThere) {
  function.keep_alive = Milliseconds(2000);
  Open();
  tests::Await(channel->Connect());
  link->answers["3E"] = "7F3E11";
  loop->Advance(milliseconds(2000));
  EXPECT_EQ(Request(), 0);
}

TEST_F(ServiceChannelTest, ReconnectForgetsTheUnansweredTesterPresent) {
  function.keep_alive = Milliseconds(2000);
  Open();
  tests::Await(channel->Connect());
  link->answers.erase("3E");
  loop->Advance(milliseconds(2050));
  tests::Await(channel->Reconnect());
  EXPECT_EQ(Request(), 0);
}

TEST_F(ServiceChannelTest, RequestInsideTheWaitOfAnotherComesAfterIt) {
  Open();
  link->on_send = [this](const std::string& message) {
    loop->At(milliseconds(30), [this, message] { link->Arrive(message == "2101" ? "610111" : "610222"); });
  };
  ByteBuffer inner;
  loop->At(milliseconds(10), [&] { tests::Await(channel->Request(ByteBuffer{0x21, 0x02}.View(), inner)); });
  EXPECT_EQ(Request(), 0);
  EXPECT_EQ(answer.ToHex(), "610111");
  EXPECT_EQ(inner.ToHex(), "610222");
  EXPECT_THAT(log, ElementsAre("connect", "2101", "2102"));
}

TEST_F(ServiceChannelTest, SilenceOfTheOuterRequestIsNoticedInsideTheInnerWait) {
  Open();
  link->on_send = [this](const std::string& message) {
    if (message == "2102") loop->At(milliseconds(30), [this] { link->Arrive("610222"); });
  };
  ByteBuffer inner;
  loop->At(milliseconds(10), [&] { tests::Await(channel->Request(ByteBuffer{0x21, 0x02}.View(), inner)); });
  EXPECT_EQ(Request(), kNoAnswer);
  EXPECT_EQ(inner.ToHex(), "610222");
  EXPECT_THAT(log, ElementsAre("connect", "2101", "connect", "2102"));
  EXPECT_EQ(loop->Now(), base::TimePoint(milliseconds(80)));
}

TEST_F(ServiceChannelTest, RequestInsideTheStartOfTheCommunicationWaitsForIt) {
  function.session = 0x81;
  Open();
  link->on_send = [this](const std::string& message) {
    loop->At(milliseconds(20), [this, message] { link->Arrive(message == "1081" ? "5081" : "6101AB"); });
  };
  ByteBuffer inner;
  loop->At(milliseconds(10), [&] { tests::Await(channel->Request(ByteBuffer{0x21, 0x01}.View(), inner)); });
  tests::Await(channel->Connect());
  EXPECT_EQ(inner.ToHex(), "6101AB");
  EXPECT_THAT(log, ElementsAre("connect", "1081", "2101"));
}

TEST_F(ServiceChannelTest, RequestThatIsCalledOffEndsAtOnceAndTheNextOneWaitsForItsExchangeOnly) {
  Open();
  link->on_send = [this](const std::string& message) {
    loop->At(milliseconds(40), [this, message] { link->Arrive(message == "2101" ? "610111" : "610222"); });
  };
  {
    const ByteBuffer request{0x21, 0x01};
    base::Job job;
    job.Start(channel->Request(request.View(), answer));
    loop->Advance(milliseconds(10));
  }
  EXPECT_EQ(Request("2102"), 0);
  EXPECT_EQ(answer.ToHex(), "610222");
  EXPECT_EQ(loop->Now(), base::TimePoint(milliseconds(80)));
  EXPECT_THAT(log, ElementsAre("connect", "2101", "2102"));
}

TEST_F(ServiceChannelTest, StartThatIsCalledOffGoesOnForWhoeverAsksNext) {
  Open();
  link->on_connect = [this] { loop->At(seconds(3), [this] { link->Connected(); }); };
  {
    const ByteBuffer request{0x21, 0x01};
    base::Job job;
    job.Start(channel->Request(request.View(), answer));
    loop->Advance(seconds(1));
  }
  EXPECT_EQ(Request(), 0);
  EXPECT_EQ(loop->Now(), base::TimePoint(seconds(3)));
  EXPECT_THAT(log, ElementsAre("connect", "2101"));
}

TEST_F(ServiceChannelTest, ThoseWhoAskMeanwhileAreServedInTheirOrder) {
  Open();
  link->on_send = [this](const std::string& message) {
    loop->At(milliseconds(40), [this, message] { link->Arrive("61" + message.substr(2) + "AB"); });
  };
  std::vector<ByteBuffer> answers(3);
  std::vector<ByteBuffer> requests{{0x21, 0x01}, {0x21, 0x02}, {0x21, 0x03}};
  std::vector<base::Job> jobs(3);
  for (std::size_t i = 0; i < 3; ++i) jobs[i].Start(channel->Request(requests[i].View(), answers[i]));
  jobs[1].CallOff();
  loop->Advance(milliseconds(200));
  EXPECT_EQ(answers[0].ToHex(), "6101AB");
  EXPECT_EQ(answers[2].ToHex(), "6103AB");
  EXPECT_THAT(log, ElementsAre("connect", "2101", "2103"));
}

TEST_F(ServiceChannelTest, CloseInsideAWaitEndsItWith1000) {
  Open();
  link->answers.clear();
  loop->At(milliseconds(10), [this] { channel->Close(); });
  EXPECT_EQ(Request(), kLinkLost);
  EXPECT_EQ(loop->Now(), base::TimePoint(milliseconds(10)));
  EXPECT_TRUE(channel->IsClosed());
  EXPECT_EQ(Request(), kLinkLost);
  EXPECT_THAT(log, ElementsAre("connect", "2101", "close"));
  EXPECT_EQ(loop->PendingEvents(), 0U);
}

TEST_F(ServiceChannelTest, LastOwnerMayGoInsideTheWait) {
  Open();
  link->answers.clear();
  ServiceChannel& raw = *channel;
  loop->At(milliseconds(10), [this] { channel.reset(); });
  EXPECT_EQ(NumberOf([&] { tests::Await(raw.Request(ByteBuffer{0x21, 0x01}.View(), answer)); }), kNoAnswer);
  EXPECT_THAT(log, ElementsAre("connect", "2101", "close"));
}

TEST_F(ServiceChannelTest, NoTimerIsLeftWhenItGoes) {
  function.keep_alive = Milliseconds(2000);
  Open();
  tests::Await(channel->Connect());
  EXPECT_EQ(loop->PendingEvents(), 1U);
  channel.reset();
  EXPECT_EQ(loop->PendingEvents(), 0U);
}

}  // namespace
}  // namespace korval::ecu
