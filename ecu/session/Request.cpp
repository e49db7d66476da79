// SPDX-License-Identifier: MIT
#include "ecu/session/Request.h"

#include <utility>

#include "base/ErrorNumbers.h"
#include "ecu/description/SinglesPlan.h"

namespace korval::ecu {
namespace {

// Reads the answer that the request has by then.
class AnswerSingles : public viator3::Singles {
 public:
  AnswerSingles(std::shared_ptr<const RequestMessages> messages, SinglesPlan plan)
      : messages_(std::move(messages)), plan_(std::move(plan)) {}

  void AppendTo(base::ByteBuffer& reply) const override { plan_.AppendTo(reply, messages_->answer.View()); }

 private:
  std::shared_ptr<const RequestMessages> messages_;
  SinglesPlan plan_;
};

}  // namespace

std::shared_ptr<Request> Request::Create(std::shared_ptr<const RequestDescription> description,
                                         std::shared_ptr<EcuConnection> connection,
                                         std::shared_ptr<const ErrorTable> errors) {
  std::shared_ptr<Request> request(
      new Request(std::move(description), std::move(connection), std::move(errors)));
  request->self_ = request;
  return request;
}

Request::Request(std::shared_ptr<const RequestDescription> description,
                 std::shared_ptr<EcuConnection> connection, std::shared_ptr<const ErrorTable> errors)
    : connection_(std::move(connection)), errors_(std::move(errors)) {
  messages_->errors = errors_;
  messages_->sent = description->sent;
  messages_->description = std::move(description);
}

base::Task<void> Request::Execute() {
  const auto self = self_.lock();
  if (messages_->sent.Empty()) {
    throw errors_->MakeFailure(kNoAnswer, Name() + " has no bytes to send in its file");
  }
  base::ByteBuffer answer;
  if (messages_->description->no_answer) {
    co_await connection_->Tell(messages_->sent.View());
    std::swap(messages_->answer, answer);
    co_return;
  }
  co_await connection_->Exchange(messages_->sent.View(), answer);
  const std::size_t needed = messages_->description->min_bytes;
  if (answer.Length() < needed) {
    throw errors_->MakeFailure(kAnswerTooShort, Name() + " was answered with " +
                                                    std::to_string(answer.Length()) + " bytes instead of " +
                                                    std::to_string(needed));
  }
  std::swap(messages_->answer, answer);
}

const Request::Items& Request::Data() const {
  if (!data_) {
    data_.emplace();
    for (const ItemDescription& item : messages_->description->Received()) {
      data_->push_back(std::make_shared<DataItem>(DataItem::Side::kReceived, item, messages_, self_));
    }
    data_->insert(data_->end(), Parameters().begin(), Parameters().end());
  }
  return *data_;
}

std::unique_ptr<viator3::Singles> Request::SinglesOf(
    std::span<const std::shared_ptr<viator3::DataItem>> items) const {
  SinglesPlan plan;
  for (const auto& item : items) {
    const auto received = std::dynamic_pointer_cast<const DataItem>(item);
    if (!received || !received->IsReceivedWith(*messages_)) return nullptr;
    plan.Add(received->Description());
  }
  return std::make_unique<AnswerSingles>(messages_, std::move(plan));
}

const Request::Items& Request::Parameters() const {
  if (!parameters_) {
    parameters_.emplace();
    for (const ItemDescription& item : messages_->description->sent_items) {
      parameters_->push_back(std::make_shared<DataItem>(DataItem::Side::kSent, item, messages_, self_));
    }
  }
  return *parameters_;
}

}  // namespace korval::ecu
