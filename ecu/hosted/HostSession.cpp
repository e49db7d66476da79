// SPDX-License-Identifier: MIT
#include "ecu/hosted/HostSession.h"

#include <algorithm>
#include <map>
#include <utility>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "ecu/ecufile/XmlEcuFileCache.h"
#include "ecu/hosted/Calls.h"
#include "ecu/kwp2000/Kwp2000Dialect.h"
#include "ecu/service/ReadTroubleCodes.h"

namespace korval::hosted {
namespace {

using CallsOf = std::shared_ptr<Calls>;

class AwaitableEcu;

class AwaitableItem : public viator3::DataItem {
 public:
  AwaitableItem(std::shared_ptr<hosted::DataItem> item, std::weak_ptr<AwaitableEcu> ecu)
      : item_(std::move(item)), ecu_(std::move(ecu)) {}

  const std::string& Name() const override { return item_->Name(); }
  base::Variant Value() const override { return item_->Value(); }
  std::string Text() const override { return item_->Text(); }
  std::string Unit() const override { return item_->Unit(); }
  void SetValue(const base::Variant& value) override { item_->SetValue(value); }
  void SetText(const std::string& text) override { item_->SetText(text); }
  std::shared_ptr<viator3::Request> OwningRequest() const override;

 private:
  std::shared_ptr<hosted::DataItem> item_;
  std::weak_ptr<AwaitableEcu> ecu_;
};

class AwaitableRequest : public viator3::Request {
 public:
  AwaitableRequest(std::shared_ptr<hosted::Request> request, CallsOf calls, std::weak_ptr<AwaitableEcu> ecu)
      : request_(std::move(request)), calls_(std::move(calls)), ecu_(std::move(ecu)) {}

  const std::string& Name() const override { return request_->Name(); }
  base::Task<void> Execute() override {
    return calls_->Do([request = request_] { request->Execute(); });
  }
  const Items& Data() const override { return Wrapped(request_->Data(), data_); }
  const Items& Parameters() const override { return Wrapped(request_->Parameters(), parameters_); }

 private:
  struct Known {
    hosted::Request::Items of;
    Items items;
  };

  const Items& Wrapped(const hosted::Request::Items& items, Known& known) const {
    if (known.of != items) {
      known.items.clear();
      for (const auto& item : items) known.items.push_back(std::make_shared<AwaitableItem>(item, ecu_));
      known.of = items;
    }
    return known.items;
  }

  std::shared_ptr<hosted::Request> request_;
  CallsOf calls_;
  std::weak_ptr<AwaitableEcu> ecu_;
  mutable Known data_;
  mutable Known parameters_;
};

class AwaitableEcu : public viator3::Ecu, public std::enable_shared_from_this<AwaitableEcu> {
 public:
  AwaitableEcu(std::shared_ptr<hosted::Ecu> ecu, CallsOf calls)
      : ecu_(std::move(ecu)), calls_(std::move(calls)) {}

  const std::shared_ptr<hosted::Ecu>& Host() const { return ecu_; }
  std::shared_ptr<viator3::Request> Wrap(const std::shared_ptr<hosted::Request>& request) {
    if (!request) return nullptr;
    const auto known =
        std::find_if(known_.begin(), known_.end(), [&](const auto& entry) { return entry.first == request; });
    if (known != known_.end()) return known->second;
    auto wrapped = std::make_shared<AwaitableRequest>(request, calls_, weak_from_this());
    known_.emplace_back(request, wrapped);
    return wrapped;
  }

  const std::string& Function() const override { return ecu_->Function(); }
  const std::string& Name() const override { return ecu_->Name(); }
  const std::string& Protocol() const override { return ecu_->Protocol(); }
  viator3::Features Features() const override {
    const bool on_can = ecu_->Protocol() == "DiagOnCAN";
    return {.initialisation = ecu_->Function() != "CAN",
            .identification = on_can || ecu_->Protocol() == "KWP2000",
            .needs_messaging = on_can};
  }
  bool Initialised() const override { return ecu_->Initialised(); }
  base::Task<void> Initialise() override {
    return calls_->Do([ecu = ecu_] { ecu->Initialise(); });
  }
  base::Task<void> Reinitialise() override {
    return calls_->Do([ecu = ecu_] { ecu->Reinitialise(); });
  }
  base::Task<void> Send(const base::ByteBuffer& request, base::ByteBuffer& answer) override {
    return calls_->Do([ecu = ecu_, &request, &answer] { ecu->Send(request, answer); });
  }
  const Requests& RequestList() override {
    const hosted::Ecu::Requests& requests = ecu_->RequestList();
    if (listed_ != requests) {
      std::erase_if(known_, [&](const auto& entry) {
        return std::find(requests.begin(), requests.end(), entry.first) == requests.end();
      });
      list_.clear();
      for (const auto& request : requests) list_.push_back(Wrap(request));
      listed_ = requests;
    }
    return list_;
  }
  const std::vector<std::string>& ReferenceData() override { return ecu_->ReferenceData(); }
  std::shared_ptr<viator3::DataItem> FindAnswerItem(const std::string& name) override {
    auto item = ecu_->FindAnswerItem(name);
    return item ? std::make_shared<AwaitableItem>(std::move(item), weak_from_this()) : nullptr;
  }
  base::Task<void> LoadMessaging(std::string path) override {
    return calls_->Do([ecu = ecu_, path = std::move(path)] { ecu->LoadMessaging(path); });
  }
  base::Task<void> ReadTroubleCodes(viator3::TroubleCodeListener& listener) override {
    return ecu::ReadTroubleCodes(
        ecu::Kwp2000().ReadTroubleCodes(), listener,
        [self = shared_from_this()](base::ByteBuffer request) { return self->Ask(std::move(request)); });
  }
  base::Task<viator3::Exchange> ReadIdentification() override { return Ask(ecu::Kwp2000().Identification()); }

 private:
  base::Task<viator3::Exchange> Ask(base::ByteBuffer request) {
    viator3::Exchange exchange{std::move(request), {}, {}};
    try {
      co_await Send(exchange.request, exchange.answer);
    } catch (const base::Failure& failure) {
      exchange.failure = failure;
    }
    co_return exchange;
  }

  std::shared_ptr<hosted::Ecu> ecu_;
  CallsOf calls_;
  std::vector<std::pair<std::shared_ptr<hosted::Request>, std::shared_ptr<AwaitableRequest>>> known_;
  hosted::Ecu::Requests listed_;
  Requests list_;
};

std::shared_ptr<viator3::Request> AwaitableItem::OwningRequest() const {
  const auto ecu = ecu_.lock();
  return ecu ? ecu->Wrap(item_->OwningRequest()) : nullptr;
}

class AwaitableInstance : public viator3::InstanceObject {
 public:
  AwaitableInstance(std::shared_ptr<hosted::InstanceObject> object, CallsOf calls)
      : object_(std::move(object)), calls_(std::move(calls)) {}

  void SetProtocol(std::shared_ptr<viator3::Ecu> ecu) override {
    const auto wrapped = std::dynamic_pointer_cast<AwaitableEcu>(ecu);
    object_->SetProtocol(wrapped ? wrapped->Host() : nullptr);
  }
  void SetNameResolver(NameResolver resolver) override { object_->SetNameResolver(std::move(resolver)); }
  base::Task<base::Variant> Get(std::string name) override {
    base::Variant value;
    Calls::Operation get = [object = object_, &name, &value] { value = object->Get(name); };
    co_await calls_->Do(std::move(get));
    co_return value;
  }
  base::Task<void> Set(std::string name, base::Variant value) override {
    return calls_->Do(
        [object = object_, name = std::move(name), value = std::move(value)] { object->Set(name, value); });
  }

 private:
  std::shared_ptr<hosted::InstanceObject> object_;
  CallsOf calls_;
};

class AwaitableSession : public viator3::Session {
 public:
  AwaitableSession(std::shared_ptr<hosted::Session> session, std::shared_ptr<base::EventLoop> loop)
      : session_(std::move(session)), calls_(std::make_shared<Calls>(std::move(loop))) {}

  std::string Port() const override { return session_->Port(); }
  base::Task<void> SetPort(std::string port) override {
    return calls_->Do([session = session_, port = std::move(port)] { session->SetPort(port); });
  }
  base::Task<void> Close() override {
    return calls_->Interrupt([session = session_] { session->Close(); });
  }
  void SetLanguage(const std::string& language) override { session_->SetLanguage(language); }
  void SetErrorsFile(const std::string& path) override { session_->SetErrorsFile(path); }
  std::shared_ptr<const viator3::EcuFile> ReadEcuFile(const std::string& path) override {
    return files_.Read(path);
  }
  void OfferEcuFile(const std::shared_ptr<const viator3::EcuFile>& file) override {
    offered_[file->Function()] = file;
    session_->OfferEcuFile(file->Path());
  }
  std::shared_ptr<viator3::Ecu> EcuByFunction(const std::string& function) override {
    return Wrap(session_->EcuByFunction(function));
  }
  std::vector<std::shared_ptr<viator3::Ecu>> Ecus() const override {
    std::vector<std::shared_ptr<viator3::Ecu>> ecus;
    for (const auto& ecu : session_->Ecus()) ecus.push_back(Wrap(ecu));
    return ecus;
  }
  bool MessagingLoaded() const override { return session_->MessagingLoaded(); }
  base::Task<void> SendFrames(std::span<const viator3::CanFrame> frames) override {
    return calls_->Do([session = session_, sent = std::vector(frames.begin(), frames.end())] {
      session->SendFrames(sent);
    });
  }
  std::shared_ptr<viator3::InstanceObject> CreateInstance(const std::string& prog_id) override {
    return std::make_shared<AwaitableInstance>(session_->CreateInstance(prog_id), calls_);
  }

 private:
  std::shared_ptr<viator3::Ecu> Wrap(const std::shared_ptr<hosted::Ecu>& ecu) const {
    const auto known =
        std::find_if(ecus_.begin(), ecus_.end(), [&](const auto& wrapped) { return wrapped->Host() == ecu; });
    if (known != ecus_.end()) return *known;
    return ecus_.emplace_back(std::make_shared<AwaitableEcu>(ecu, calls_));
  }

  std::shared_ptr<hosted::Session> session_;
  CallsOf calls_;
  ecu::XmlEcuFileCache files_;
  std::map<std::string, std::shared_ptr<const viator3::EcuFile>> offered_;  // what serves stays known
  mutable std::vector<std::shared_ptr<AwaitableEcu>> ecus_;
};

}  // namespace

std::shared_ptr<viator3::Session> Awaitable(std::shared_ptr<Session> session,
                                            std::shared_ptr<base::EventLoop> loop) {
  if (!session) return nullptr;
  return std::make_shared<AwaitableSession>(std::move(session), std::move(loop));
}

}  // namespace korval::hosted
