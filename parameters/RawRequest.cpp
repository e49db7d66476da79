// SPDX-License-Identifier: MIT
#include "parameters/RawRequest.h"

#include <memory>

#include "base/Failure.h"
#include "parameters/EcuFunction.h"

namespace korval::parameters {
namespace {

using Exchange = model::KorvAsapFile::RawExchange;

base::ByteBuffer RequestFromHex(const std::string& hex) {
  try {
    base::ByteBuffer request = base::ByteBuffer::FromHex(hex);
    if (!request.Empty()) return request;
  } catch (const base::Failure&) {
    throw base::Failure("Invalid request");
  }
  throw base::Failure("Invalid request");
}

base::Task<void> SendAndTakeAnyAnswer(std::shared_ptr<viator3::Ecu> ecu, Exchange& exchange) {
  try {
    co_await ecu->Send(exchange.request, exchange.answer);
  } catch (const base::Failure& failure) {
    if (failure.Number() != kNegativeAnswer || exchange.answer.Empty()) throw;
  }
}

}  // namespace

base::Task<void> RawRequest::Send(std::shared_ptr<model::KorvAsapFile> file, std::string hex) {
  const auto ecu = EcuFunction(diagnosis_, *file);
  file->SetLastRawExchange(nullptr);
  const auto exchange = std::make_shared<Exchange>();
  exchange->request = RequestFromHex(hex);
  co_await SendAndTakeAnyAnswer(ecu, *exchange);
  file->SetLastRawExchange(exchange);
  if (console_.DebugTrace()) {
    console_.Line("kwprequest ok send:" + exchange->request.ToHex() + " receive:" + exchange->answer.ToHex());
  }
}

std::string RawRequest::LastAnswer(const model::KorvAsapFile& file) {
  const auto exchange = file.LastRawExchange();
  if (!exchange) throw base::Failure("Unable to get value, Set parameter before to get value");
  return exchange->answer.ToHex();
}

}  // namespace korval::parameters
