// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/kline/KLineTester.h"
#include "ecu/kline/SharedKLine.h"
#include "ecu/link/MessageLink.h"

namespace korval::ecu {

/// Brings a tester, the line and the event loop together. What the link asks for is done when the line is
/// granted, one thing at a time; the line is released as soon as nothing is under way.
class KLineDriver : public KLineUser, public std::enable_shared_from_this<KLineDriver> {
 public:
  using Note = std::function<void(const std::string&)>;

  /// `note` is told of what is no failure but worth knowing. It may be empty.
  KLineDriver(std::shared_ptr<base::EventLoop> loop, std::shared_ptr<SharedKLine> line,
              const FunctionDescription& function, const ServiceNames& names, Note note);

  void SetEvents(MessageLink::Events events) { events_ = std::move(events); }
  void Connect();
  void Send(base::ByteView message);
  /// Nothing more is awaited of the last message.
  void Rest();
  /// Ends the communication. No event comes afterwards until the next Connect.
  void Close();
  /// Whether the communication stands.
  bool Stands() const { return tester_.IsConnected(); }
  /// How long the ECU bears silence.
  base::Duration LongestSilence() const;
  const KLineTester& Tester() const { return tester_; }

  void Granted() override;
  void BytesArrived(base::ByteView bytes) override;
  void Lost(const std::string& why) override;

 private:
  enum class Task { kConnect, kSend, kStop };

  void Claim(Task task);
  void GiveUp(std::int32_t number, const std::string& why);
  void DueNow();
  void DeadlinePassed();
  void MoveOn();
  void Prepare();
  void Perform(const KLineTester::Action& action);
  void SetLevel(bool low);
  WakeUp::Means FindMeans();
  void SetTimers();
  void Report();
  void TellHowLong();
  void Raise(const KLineTester::Event& event);

  std::shared_ptr<base::EventLoop> loop_;
  std::shared_ptr<SharedKLine> line_;
  FunctionDescription function_;
  KLineTester tester_;
  Note note_;
  WakeUp::Means means_ = WakeUp::Means::kBreak;
  bool has_lines_ = true;  // RTS and DTR, as far as the file wants them set
  MessageLink::Events events_;
  bool listening_ = false;  // to the events
  Task task_ = Task::kConnect;
  base::ByteBuffer message_;
  std::unique_ptr<base::Timer> due_;          // for what the tester does
  std::unique_ptr<base::Deadline> deadline_;  // for what it waits for
  bool moving_ = false;
};

}  // namespace korval::ecu
