// SPDX-License-Identifier: MIT
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "ecu/hosted/HostSession.h"
#include "tests/support/Await.h"
#include "tests/support/ManualEventLoop.h"
#include "tests/support/TempFolder.h"

namespace korval::hosted {
namespace {

using base::ByteBuffer;
using std::chrono::milliseconds;
using testing::ElementsAre;

// A host's objects. Each operation that talks to an ECU is logged and then blocks for as long as the test
// says, with the events running.
struct Host {
  std::shared_ptr<tests::ManualEventLoop> loop = std::make_shared<tests::ManualEventLoop>();
  std::vector<std::string> log;
  milliseconds wait{0};
  bool is_closed = false;
  std::function<void(const ByteBuffer&, ByteBuffer&)> on_send = [](const ByteBuffer&, ByteBuffer&) {};

  void Block(const std::string& what) {
    log.push_back(what);
    is_closed = false;
    loop->RunUntil(loop->Now() + wait, [this] { return is_closed; });
    log.push_back(what + " done");
    if (is_closed) throw base::Failure(kLinkLost, "closed");
  }
};

class Item : public hosted::DataItem {
 public:
  explicit Item(std::weak_ptr<hosted::Request> request) : request_(std::move(request)) {}
  const std::string& Name() const override { return name_; }
  base::Variant Value() const override { return 812.5; }
  std::string Text() const override { return "812.5"; }
  std::string Unit() const override { return "rpm"; }
  void SetValue(const base::Variant&) override { throw base::Failure(kReadOnly, "read only"); }
  void SetText(const std::string&) override { throw base::Failure(kReadOnly, "read only"); }
  std::shared_ptr<hosted::Request> OwningRequest() const override { return request_.lock(); }

 private:
  std::string name_ = "Speed";
  std::weak_ptr<hosted::Request> request_;
};

class Reading : public hosted::Request {
 public:
  static std::shared_ptr<Reading> Create(Host& host) {
    auto request = std::make_shared<Reading>(host);
    request->data_.push_back(std::make_shared<Item>(request));
    return request;
  }
  explicit Reading(Host& host) : host_(host) {}
  const std::string& Name() const override { return name_; }
  void Execute() override { host_.Block("execute"); }
  const Items& Data() const override { return data_; }
  const Items& Parameters() const override { return none_; }

 private:
  Host& host_;
  std::string name_ = "READ";
  Items data_;
  Items none_;
};

class Engine : public hosted::Ecu {
 public:
  explicit Engine(Host& host) : host_(host) {}
  const std::string& Function() const override { return function_; }
  const std::string& Name() const override { return function_; }
  const std::string& Protocol() const override { return protocol; }
  bool Initialised() const override { return true; }
  void Initialise() override { host_.Block("initialise"); }
  void Reinitialise() override { host_.Block("reinitialise"); }
  void Send(const ByteBuffer& request, ByteBuffer& answer) override {
    host_.Block("send " + request.ToHex());
    host_.on_send(request, answer);
  }
  const Requests& RequestList() override { return requests_; }
  const std::vector<std::string>& ReferenceData() override { return names_; }
  std::shared_ptr<hosted::DataItem> FindAnswerItem(const std::string& name) override {
    return name == "Speed" ? requests_.front()->Data().front() : nullptr;
  }
  void LoadMessaging(const std::string& path) override { host_.Block("messaging " + path); }

  std::string protocol = "KWP2000";

 private:
  Host& host_;
  std::string function_ = "ENGINE";
  Requests requests_{Reading::Create(host_)};
  std::vector<std::string> names_;
};

class Instance : public hosted::InstanceObject {
 public:
  explicit Instance(Host& host) : host_(host) {}
  void SetProtocol(std::shared_ptr<hosted::Ecu> ecu) override { ecu_ = std::move(ecu); }
  void SetNameResolver(NameResolver resolver) override { resolver_ = std::move(resolver); }
  base::Variant Get(const std::string& name) override {
    host_.Block("get " + resolver_(name) + " of " + ecu_->Function());
    return 7.0;
  }
  void Set(const std::string& name, const base::Variant& value) override {
    host_.Block("set " + name + " " + value.ToText());
  }

 private:
  Host& host_;
  std::shared_ptr<hosted::Ecu> ecu_;
  NameResolver resolver_;
};

class HostsSession : public hosted::Session {
  Host& host_;

 public:
  explicit HostsSession(Host& host) : host_(host) {}
  std::string Port() const override { return "HOST"; }
  void SetPort(const std::string& port) override { host_.Block("port " + port); }
  void Close() override {
    host_.log.emplace_back("close");
    host_.is_closed = true;
  }
  void SetLanguage(const std::string& language) override { host_.log.push_back("language " + language); }
  void SetErrorsFile(const std::string&) override {}
  void OfferEcuFile(const std::string& path) override { offered = path; }
  std::shared_ptr<hosted::Ecu> EcuByFunction(const std::string& function) override {
    if (function != "ENGINE") throw base::Failure(kNoEcuFile, "no " + function);
    return engine;
  }
  std::vector<std::shared_ptr<hosted::Ecu>> Ecus() const override { return {engine}; }
  bool MessagingLoaded() const override { return false; }
  void SendFrames(const std::vector<viator3::CanFrame>& frames) override {
    host_.Block("frames " + std::to_string(frames.size()));
  }
  std::shared_ptr<hosted::InstanceObject> CreateInstance(const std::string&) override {
    return std::make_shared<Instance>(host_);
  }

  std::shared_ptr<Engine> engine = std::make_shared<Engine>(host_);
  std::string offered;
};

class HostSessionTest : public testing::Test {
 protected:
  std::shared_ptr<viator3::Ecu> Ecu() { return session_->EcuByFunction("ENGINE"); }

  Host host_;
  std::shared_ptr<HostsSession> hosts_ = std::make_shared<HostsSession>(host_);
  std::shared_ptr<viator3::Session> session_ = Awaitable(hosts_, host_.loop);
};

TEST_F(HostSessionTest, OfNoSessionThereIsNone) { EXPECT_EQ(Awaitable(nullptr, host_.loop), nullptr); }

TEST_F(HostSessionTest, ObjectsOfTheHostAreTheSameEachTime) {
  const auto ecu = Ecu();
  EXPECT_EQ(ecu, Ecu());
  EXPECT_EQ(session_->Ecus(), std::vector{ecu});
  const auto request = ecu->RequestList().front();
  EXPECT_EQ(ecu->RequestList().front(), request);
  EXPECT_EQ(ecu->FindAnswerItem("Speed")->OwningRequest(), request);
  EXPECT_EQ(request->Data().front()->OwningRequest(), request);
  EXPECT_EQ(request->Data().front()->Value(), base::Variant(812.5));
  EXPECT_EQ(ecu->FindAnswerItem("Other"), nullptr);
}

TEST_F(HostSessionTest, AnOperationThatBlocksIsAwaited) {
  host_.wait = milliseconds(300);
  tests::Await(*host_.loop, Ecu()->RequestList().front()->Execute());
  EXPECT_EQ(host_.loop->Now(), base::TimePoint(milliseconds(300)));
  EXPECT_THAT(host_.log, ElementsAre("execute", "execute done"));
}

TEST_F(HostSessionTest, ItsFailureIsRaisedWhereItIsAwaited) {
  host_.on_send = [](const ByteBuffer&, ByteBuffer& answer) {
    answer = {0x7F, 0x21, 0x11};
    throw base::Failure(kNegativeAnswer, "refused");
  };
  ByteBuffer answer;
  const ByteBuffer request{0x21, 0x01};
  EXPECT_THROW(tests::Await(*host_.loop, Ecu()->Send(request, answer)), base::Failure);
  EXPECT_EQ(answer.ToHex(), "7F2111");
}

TEST_F(HostSessionTest, NoOperationIsCalledInsideAnother) {
  host_.wait = milliseconds(100);
  base::Job second;
  host_.loop->At(milliseconds(10), [&] { second.Start(Ecu()->Initialise()); });
  base::Job first;
  first.Start(Ecu()->RequestList().front()->Execute());
  host_.loop->Advance(milliseconds(500));
  EXPECT_THAT(host_.log, ElementsAre("execute", "execute done", "initialise", "initialise done"));
}

TEST_F(HostSessionTest, ATaskThatIsDroppedInsideAnOperationGoesNoFurther) {
  host_.wait = milliseconds(100);
  bool went_on = false;
  const auto work = [](std::shared_ptr<viator3::Ecu> ecu, bool& further) -> base::Task<void> {
    co_await ecu->Initialise();
    further = true;
  };
  auto job = std::make_unique<base::Job>();
  host_.loop->At(milliseconds(10), [&] { job.reset(); });
  job->Start(work(Ecu(), went_on));
  EXPECT_FALSE(went_on);
  EXPECT_THAT(host_.log, ElementsAre("initialise", "initialise done"));
}

TEST_F(HostSessionTest, CloseEndsAWaitAndThenThePortIsReleased) {
  host_.wait = milliseconds(1000);
  const auto end = [](std::shared_ptr<viator3::Session> session) -> base::Task<void> {
    co_await session->Close();
    co_await session->SetPort("");
  };
  host_.loop->At(milliseconds(10), [&] { base::Job::Run(end(session_)); });
  ByteBuffer answer;
  const ByteBuffer request{0x21, 0x01};
  EXPECT_THROW(tests::Await(*host_.loop, Ecu()->Send(request, answer)), base::Failure);
  EXPECT_EQ(host_.loop->Now(), base::TimePoint(milliseconds(10)));
  host_.loop->Advance(milliseconds(2000));
  EXPECT_THAT(host_.log, ElementsAre("send 2101", "close", "send 2101 done", "port ", "port  done"));
}

TEST_F(HostSessionTest, CloseStandsOnNobodysStack) {
  bool closed_inside = true;
  host_.loop->At(milliseconds(1), [&] {
    base::Job::Run(session_->Close());
    closed_inside = !host_.log.empty();
  });
  host_.loop->Advance(milliseconds(2));
  EXPECT_FALSE(closed_inside);
  EXPECT_THAT(host_.log, ElementsAre("close"));
}

TEST_F(HostSessionTest, WhatAnEcuCanDoFollowsFromItsProtocol) {
  EXPECT_TRUE(Ecu()->Features().identification);
  EXPECT_FALSE(Ecu()->Features().needs_messaging);
  hosts_->engine->protocol = "DiagOnCAN";
  EXPECT_TRUE(Ecu()->Features().needs_messaging);
  hosts_->engine->protocol = "Sensor";
  EXPECT_FALSE(Ecu()->Features().identification);
  EXPECT_TRUE(Ecu()->Features().initialisation);
}

TEST_F(HostSessionTest, TroubleCodesAndIdentificationAreReadThroughSend) {
  class Listener : public viator3::TroubleCodeListener {
   public:
    void Exchanged(const viator3::Exchange& exchange) override { log.push_back(exchange.request.ToHex()); }
    void Counted(std::int32_t count) override { log.push_back(std::to_string(count)); }
    void Read(std::int32_t index, const viator3::TroubleCode& code) override {
      log.push_back(std::to_string(index) + ":" + std::to_string(code.code) + "/" +
                    std::to_string(code.status));
    }
    std::vector<std::string> log;
  };
  host_.on_send = [](const ByteBuffer& request, ByteBuffer& answer) {
    if (request.At(0) == 0x21) {
      answer = {0x61, 0x80, 0x31};
    } else if (request.At(2) == 0) {
      answer = {0x57, 0x02, 0x01, 0x00, 0x20};
    } else {
      answer = {0x57, 0x02, 0x02, 0x00, 0x60};
    }
  };
  Listener listener;
  tests::Await(*host_.loop, Ecu()->ReadTroubleCodes(listener));
  EXPECT_THAT(listener.log, ElementsAre("17FF00", "2", "1:256/32", "17FFFF", "2:512/96"));
  const auto exchange = tests::Await(*host_.loop, Ecu()->ReadIdentification());
  EXPECT_EQ(exchange.request.ToHex() + " " + exchange.answer.ToHex(), "2180 618031");
}

TEST_F(HostSessionTest, ValuesByNameGoThroughTheHostsObject) {
  const auto instance = session_->CreateInstance("qor4inst.ENGINE");
  instance->SetProtocol(Ecu());
  instance->SetNameResolver([](const std::string& name) { return name == "N" ? "Speed" : ""; });
  EXPECT_EQ(tests::Await(*host_.loop, instance->Get("N")), base::Variant(7.0));
  tests::Await(*host_.loop, instance->Set("Limit", 12.5));
  EXPECT_THAT(host_.log, ElementsAre("get Speed of ENGINE", "get Speed of ENGINE done", "set Limit 12.5",
                                     "set Limit 12.5 done"));
}

TEST_F(HostSessionTest, TheServerReadsOfAnEcuFileWhatDescriptionFilesNeed) {
  const tests::TempFolder folder;
  folder.Write(
      "ecu.xml",
      "<xml xmlns:qor='urn:korval:ecu'><qor:Target><Function Name='ENGINE'/><Requests><Request "
      "Name='R'><Received><DataItem Name='Speed' Ref='1'/><DataItem Name='Own'/></Received></Request>"
      "</Requests></qor:Target></xml>");
  const auto file = session_->ReadEcuFile(folder.Path("ecu.xml"));
  EXPECT_EQ(file->Function(), "ENGINE");
  EXPECT_EQ(file->Offered({"Speed", "Own", "Other"}), viator3::EcuFile::Names{"Speed"});
  session_->OfferEcuFile(file);
  EXPECT_EQ(hosts_->offered, folder.Path("ecu.xml"));
  EXPECT_EQ(session_->ReadEcuFile(folder.Path("ecu.xml")), file);
}

// A host that was compiled with an earlier version says so; what it cannot have is not called.
TEST_F(HostSessionTest, AnObjectKnowsTheVersionThatItsHostWasCompiledWith) {
  class Earlier : public HostsSession {
   public:
    using HostsSession::HostsSession;
  };
  EXPECT_EQ(Earlier(host_).Version(), viator3::kVersion);
  class OlderItem : public hosted::DataItem {
   public:
    OlderItem() : DataItem(0) {}
    const std::string& Name() const override { return name_; }
    base::Variant Value() const override { return {}; }
    std::string Text() const override { return {}; }
    std::string Unit() const override { return {}; }
    void SetValue(const base::Variant&) override {}
    void SetText(const std::string&) override {}
    std::shared_ptr<hosted::Request> OwningRequest() const override { return nullptr; }

   private:
    std::string name_;
  };
  EXPECT_EQ(OlderItem().Version(), 0);
}

}  // namespace
}  // namespace korval::hosted
