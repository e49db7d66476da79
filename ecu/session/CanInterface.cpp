// SPDX-License-Identifier: MIT
#include "ecu/session/CanInterface.h"

#include <optional>
#include <utility>

#include "base/ErrorNumbers.h"
#include "base/Signal.h"
#include "ecu/isotp/IsoTpLink.h"

namespace korval::ecu {
namespace {

// As it also stands in DBC files.
constexpr std::uint32_t kExtendedFlag = 0x80000000;

// However the wait for frames ends, by a failure too: those that are left are not sent any more.
struct Withdrawal {
  SharedCanBus& bus;
  const std::shared_ptr<const SharedCanBus::Listener>& sender;

  Withdrawal(SharedCanBus& on, const std::shared_ptr<const SharedCanBus::Listener>& of)
      : bus(on), sender(of) {}
  ~Withdrawal() { bus.Withdraw(sender); }
  Withdrawal(const Withdrawal&) = delete;
  Withdrawal& operator=(const Withdrawal&) = delete;
};

}  // namespace

CanInterface::CanInterface(std::shared_ptr<base::EventLoop> loop, OpenBus open,
                           std::shared_ptr<const ErrorTable> errors,
                           std::shared_ptr<const MessagingFile> messaging)
    : loop_(std::move(loop)),
      open_(std::move(open)),
      errors_(std::move(errors)),
      messaging_(std::move(messaging)),
      bus_(std::make_shared<SharedCanBus>(loop_, OpenAt(messaging_->bitrate))) {}

CanInterface::~CanInterface() { bus_->Close(); }

SharedCanBus::Open CanInterface::OpenAt(std::int32_t bitrate) const {
  return [open = open_, bitrate] { return open(bitrate); };
}

std::string CanInterface::EcuOf(const FunctionDescription& function) const {
  const IsoTpParameters parameters = ParametersOf(function);
  const auto end = [](const CanIdentifier& identifier, const std::optional<std::uint8_t>& target) {
    return std::to_string(identifier.number) + (identifier.extended ? "x" : "") +
           (target ? "@" + std::to_string(*target) : "");
  };
  return end(parameters.transmit, parameters.transmit_target) + " " +
         end(parameters.receive, parameters.receive_target);
}

std::unique_ptr<MessageLink> CanInterface::LinkTo(std::shared_ptr<const EcuDescription> ecu) {
  return std::make_unique<IsoTpLink>(loop_, bus_, ParametersOf(ecu->Function()));
}

IsoTpParameters CanInterface::ParametersOf(const FunctionDescription& function) const {
  std::optional<IsoTpParameters> parameters;
  try {
    parameters = IsoTpParameters::OfTester(
        function, function.Can().CompletedBy(messaging_->TransportOf(function.name)));
  } catch (const base::Failure& failure) {
    throw errors_->MakeFailure(failure.Number(), failure.Description());
  }
  if (parameters) return *parameters;
  throw errors_->MakeFailure(kInterfaceRefused,
                             "the CAN identifiers of " + function.name +
                                 " are unknown; give RequestId and ResponseId in its ECU file, or a "
                                 "Diagnostic element in the CAN messaging file");
}

CanFrame CanInterface::FrameOf(const FrameToSend& frame) const {
  const auto bits = static_cast<std::uint32_t>(frame.identifier);
  const CanIdentifier sent{bits & ~kExtendedFlag, bits > kLastBaseIdentifier};
  if (sent.number > kLastExtendedIdentifier) {
    throw errors_->MakeFailure(kValueRefused, "a CAN identifier has at most 29 bits, " +
                                                  std::to_string(frame.identifier) + " has more");
  }
  return {sent, frame.data.View()};
}

base::Task<void> CanInterface::SendFrames(std::vector<FrameToSend> frames) {
  std::vector<CanFrame> to_send;
  to_send.reserve(frames.size());
  for (const FrameToSend& frame : frames) to_send.push_back(FrameOf(frame));
  std::optional<SharedCanBus::Trouble> trouble = bus_->Loss();
  const auto changed = std::make_shared<base::Signal>(loop_);
  SharedCanBus::Listener listener;
  listener.on_trouble = [&trouble, changed](const SharedCanBus::Trouble& raised) {
    trouble = raised;
    changed->Raise();
  };
  listener.on_taken = [changed] { changed->Raise(); };
  const auto sender = std::make_shared<const SharedCanBus::Listener>(std::move(listener));
  const auto bus = bus_;  // this may be destroyed in the wait
  const auto errors = errors_;
  bus->Listen(sender);
  const Withdrawal withdrawal{*bus, sender};
  for (const CanFrame& frame : to_send) {
    if (!trouble) bus->Send(frame, sender);
  }
  // Every frame that waits is taken or dropped in the end.
  while (!trouble && bus->IsWaiting(sender)) co_await changed->Next();
  if (!trouble) trouble = bus->Loss();
  if (trouble) throw errors->MakeFailure(NumberOf(trouble->error), trouble->text);
}

void CanInterface::UseMessaging(const std::shared_ptr<const MessagingFile>& messaging) {
  const auto before = std::exchange(messaging_, messaging);
  if (messaging_->bitrate != before->bitrate) bus_->Reopen(OpenAt(messaging_->bitrate));
}

void CanInterface::HearFrames(const std::function<void(const CanFrame&)>& on_frame) {
  SharedCanBus::Listener listener;
  listener.on_frame = on_frame;
  listener_ = std::make_shared<const SharedCanBus::Listener>(std::move(listener));
  bus_->Listen(listener_);
}

}  // namespace korval::ecu
