// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/ByteBuffer.h"
#include "diag/viator3.h"
#include "model/KeyedList.h"

namespace korval::model {

/// What get online value reads: the connection's data-item list and the current ECU object. Lives as long
/// as the client's session; whoever waits holds the lists it was given, because they may be dropped then.
class Acquisition {
 public:
  /// As many as the count word of an online answer can tell.
  static constexpr std::int32_t kMostItems = 0xFFFF;
  /// Keyed by the value's name.
  using DataItems = KeyedList<viator3::DataItem>;
  using Requests = viator3::Ecu::Requests;

  /// Makes `ecu` the current ECU object and starts an empty list; does nothing once there is one.
  void Start(const std::shared_ptr<viator3::Ecu>& ecu);
  /// Appends a data item of `ecu`, after Start. False when the list has that name already. Raises Failure
  /// when the list is full.
  bool Add(const std::string& value_name, const viator3::Ecu& ecu,
           const std::shared_ptr<viator3::DataItem>& item);
  void Drop();

  /// Null until Start.
  std::shared_ptr<viator3::Ecu> CurrentEcu() const { return current_ecu_; }
  std::shared_ptr<const DataItems> Items() const { return items_; }
  /// Appends the values of Items, in their order, as viator3::Singles does.
  void AppendValues(base::ByteBuffer& reply);
  /// The requests of the current ECU object that carry values of the list, in the library's order. Behind
  /// them those of objects that serve the same function since its file has changed, or did so before.
  std::shared_ptr<const Requests> RequestsToExecute();

 private:
  // Neighbours in the list that come with the same request.
  struct Run {
    std::shared_ptr<viator3::Request> request;
    std::unique_ptr<viator3::Singles> singles;              // null: asked one by one
    std::vector<std::shared_ptr<viator3::DataItem>> items;  // none when they need not be asked
  };

  void GatherRuns();
  std::shared_ptr<viator3::Ecu> current_ecu_;
  std::shared_ptr<DataItems> items_;
  Requests carriers_;  // of the items of the current function; held, for their ECU object may be replaced
  std::shared_ptr<const Requests> requests_;  // null: to be gathered anew
  std::vector<Run> runs_;                     // of the items; empty: to be gathered anew
};

}  // namespace korval::model
