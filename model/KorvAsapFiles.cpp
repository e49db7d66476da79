// SPDX-License-Identifier: MIT
#include "model/KorvAsapFiles.h"

#include <algorithm>

#include "base/Failure.h"

namespace korval::model {
namespace {

constexpr std::int32_t kLargestId = 0xFFFF;

}  // namespace

std::shared_ptr<KorvAsapFile> KorvAsapFiles::Add(const std::string& description_file,
                                                 const std::string& binary_file, std::int32_t destination,
                                                 const std::string& key) {
  if (last_id_ >= kLargestId) {
    throw base::Failure("Too many files selected, send exit and init before the next select file");
  }
  auto file = std::make_shared<KorvAsapFile>(folders_, description_file, binary_file, destination,
                                             last_id_ + 1, contents_);
  Append(file, key);
  ++last_id_;
  return file;
}

std::shared_ptr<KorvAsapFile> KorvAsapFiles::ItemId(std::int32_t id) const {
  // Ids only grow, so the list is in their order.
  const auto found = std::lower_bound(
      begin(), end(), id, [](const auto& file, std::int32_t wanted) { return file->Id() < wanted; });
  return found == end() || (*found)->Id() != id ? nullptr : *found;
}

void KorvAsapFiles::Clear() {
  KeyedList::Clear();
  last_id_ = 0;
  contents_ = std::make_shared<FileContents>();
  ++generation_;
}

}  // namespace korval::model
