// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/EventLoop.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/kline/SharedKLine.h"
#include "ecu/link/MessageLink.h"
#include "ecu/link/ServiceNames.h"

namespace korval::ecu {

class KLineDriver;

/// The messages of one ECU by ISO 14230 on a K-line that others use too. Closing it ends the communication
/// with stopCommunication, which goes out as long as the line is there.
class KLineLink : public MessageLink {
 public:
  using Note = std::function<void(const std::string&)>;

  /// The names outlive it. `note` is told of what is no failure but worth knowing. It may be empty.
  KLineLink(std::shared_ptr<base::EventLoop> loop, const std::shared_ptr<SharedKLine>& line,
            const FunctionDescription& function, const ServiceNames& names, Note note);
  ~KLineLink() override;
  KLineLink(const KLineLink&) = delete;
  KLineLink& operator=(const KLineLink&) = delete;

  void SetEvents(Events events) override;
  void Connect() override;
  void Send(base::ByteView message) override;
  void Rest() override;
  void Pause() override { Rest(); }
  void Close() override;
  LinkOffer Offer() const override;
  bool Stands() const override;
  std::string WhyNoAnswer() const override;

 private:
  std::shared_ptr<KLineDriver> driver_;
};

}  // namespace korval::ecu
