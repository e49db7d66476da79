// SPDX-License-Identifier: MIT
#include "ecu/kline/KLineLink.h"

#include <utility>

#include "ecu/kline/KLineDriver.h"
#include "ecu/kline/KLineFrame.h"

namespace korval::ecu {
namespace {

// A wire among ignition leads: a damaged byte now and then is nothing unusual.
constexpr int kUsualRepeats = 2;

}  // namespace

KLineLink::KLineLink(std::shared_ptr<base::EventLoop> loop, const std::shared_ptr<SharedKLine>& line,
                     const FunctionDescription& function, const ServiceNames& names, Note note)
    : driver_(std::make_shared<KLineDriver>(std::move(loop), line, function, names, std::move(note))) {
  line->Join(driver_);
}

KLineLink::~KLineLink() { driver_->Close(); }

void KLineLink::SetEvents(Events events) { driver_->SetEvents(std::move(events)); }

void KLineLink::Connect() { driver_->Connect(); }

void KLineLink::Send(base::ByteView message) { driver_->Send(message); }

void KLineLink::Rest() { driver_->Rest(); }

void KLineLink::Close() { driver_->Close(); }

bool KLineLink::Stands() const { return driver_->Stands(); }

std::string KLineLink::WhyNoAnswer() const { return driver_->Tester().WhyNoAnswer(); }

LinkOffer KLineLink::Offer() const {
  LinkOffer offer;
  offer.answer = driver_->Tester().AnswerTime();
  offer.pending = driver_->Tester().PendingTime();
  offer.longest_message = kLongestKLineMessage;
  offer.longest_silence = driver_->LongestSilence();
  offer.usual_repeats = kUsualRepeats;
  return offer;
}

}  // namespace korval::ecu
