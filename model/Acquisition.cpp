// SPDX-License-Identifier: MIT
#include "model/Acquisition.h"

#include <array>
#include <optional>
#include <unordered_set>

#include "base/Failure.h"
#include "protocol/FieldCodec.h"

namespace korval::model {

void Acquisition::Start(const std::shared_ptr<viator3::Ecu>& ecu) {
  if (current_ecu_) return;
  current_ecu_ = ecu;
  items_ = std::make_shared<DataItems>();
  requests_.reset();
  runs_.clear();
}

bool Acquisition::Add(const std::string& value_name, const viator3::Ecu& ecu,
                      const std::shared_ptr<viator3::DataItem>& item) {
  if (!items_) throw base::Failure("No ECU object to acquire values from");
  if (items_->Contains(value_name)) return false;
  if (items_->Count() >= kMostItems) {
    throw base::Failure("Too many values chosen, at most " + std::to_string(kMostItems) +
                        " different ones in one session: send exit and init to start anew");
  }
  items_->Append(item, value_name);
  if (ecu.Function() == current_ecu_->Function()) carriers_.push_back(item->OwningRequest());
  requests_.reset();
  runs_.clear();
  return true;
}

void Acquisition::Drop() {
  current_ecu_.reset();
  items_.reset();
  carriers_.clear();
  requests_.reset();
  runs_.clear();
}

void Acquisition::GatherRuns() {
  for (const auto& item : *items_) {
    auto request = item->OwningRequest();
    if (runs_.empty() || runs_.back().request != request) runs_.push_back({std::move(request), nullptr, {}});
    runs_.back().items.push_back(item);
  }
  for (Run& run : runs_) {
    if (run.request) run.singles = run.request->SinglesOf(run.items);
    if (run.singles) run.items.clear();
  }
}

void Acquisition::AppendValues(base::ByteBuffer& reply) {
  static constexpr std::array<std::uint8_t, 4> kNoValue{0xFF, 0x00, 0x00, 0x00};
  if (runs_.empty()) GatherRuns();
  for (const Run& run : runs_) {
    if (run.singles) run.singles->AppendTo(reply);
    for (const auto& item : run.items) {
      if (const std::optional<float> value = item->Value().ToSingle()) {
        protocol::AppendReal(reply, *value);
      } else {
        reply.Append(base::ByteView(kNoValue));
      }
    }
  }
}

std::shared_ptr<const Acquisition::Requests> Acquisition::RequestsToExecute() {
  if (requests_) return requests_;
  const auto gathered = std::make_shared<Requests>();
  if (current_ecu_) {
    std::unordered_set<std::shared_ptr<viator3::Request>> chosen(carriers_.begin(), carriers_.end());
    chosen.erase(nullptr);
    const auto take = [&](const std::shared_ptr<viator3::Request>& request) {
      if (chosen.erase(request) > 0) gathered->push_back(request);
    };
    for (const auto& request : current_ecu_->RequestList()) take(request);
    for (const auto& request : carriers_) take(request);
  }
  requests_ = gathered;
  return requests_;
}

}  // namespace korval::model
