// SPDX-License-Identifier: MIT
#include "ecu/description/RequestDescription.h"

#include <algorithm>
#include <utility>

#include "ecu/description/AttributeReader.h"

namespace korval::ecu {
namespace {

// Bytes that the file leaves out are zero. More of them than a K-line message has would let a small file
// ask for any amount of memory.
constexpr std::size_t kLongestCompleted = 255;

void FitSentBytes(RequestDescription& request) {
  const std::size_t longest = std::max(request.sent.Length(), kLongestCompleted);
  std::erase_if(request.sent_items,
                [&](const ItemDescription& item) { return item.BytesNeeded() > longest; });
  for (const ItemDescription& item : request.sent_items) {
    request.sent.SetLength(std::max(request.sent.Length(), item.BytesNeeded()));
  }
}

}  // namespace

std::optional<RequestDescription> RequestDescription::Read(const pugi::xml_node& node) {
  RequestDescription request;
  request.name = node.attribute("Name").value();
  request.no_answer = FlagAttribute(node, "NoAnswer");
  const pugi::xml_node sent = node.child("Sent");
  if (request.name.empty()) return std::nullopt;
  auto bytes = BytesAttribute(sent, "Bytes");
  if (bytes && !bytes->Empty() && bytes->Length() <= kLongestMessage) {
    request.sent = *std::move(bytes);
    request.sent_items = ReadDataItems(sent);
    FitSentBytes(request);
  }
  request.received_node_ = node.child("Received");
  request.min_bytes =
      static_cast<std::size_t>(IntegerAttribute(request.received_node_, "MinBytes", 1, 1, kLongestMessage));
  return request;
}

const RequestDescription::Items& RequestDescription::Received() const {
  if (!received_) received_ = ReadDataItems(received_node_);
  return *received_;
}

}  // namespace korval::ecu
