// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "model/Folders.h"
#include "model/KeyedList.h"
#include "model/KorvAsapFile.h"

namespace korval::model {

/// The selected description files, in the order of selection.
class KorvAsapFiles : private KeyedList<KorvAsapFile> {
 public:
  /// The folders are those of the settings and outlive the collection.
  explicit KorvAsapFiles(const Folders& folders) : folders_(folders) {}

  /// Adds a file with the next id. Raises Failure when the ids, which travel as words, are used up.
  std::shared_ptr<KorvAsapFile> Add(const std::string& description_file, const std::string& binary_file,
                                    std::int32_t destination, const std::string& key = {});
  /// The first file of that id, null when there is none.
  std::shared_ptr<KorvAsapFile> ItemId(std::int32_t id) const;
  /// Empties the collection; the next file gets id 1 again. What the files have read goes with them.
  void Clear();
  /// Grows with every Clear.
  unsigned Generation() const { return generation_; }

  using KeyedList::begin;
  using KeyedList::Count;
  using KeyedList::end;
  using KeyedList::Item;
  using KeyedList::Remove;

 private:
  const Folders& folders_;
  std::int32_t last_id_ = 0;
  unsigned generation_ = 0;
  std::shared_ptr<FileContents> contents_ = std::make_shared<FileContents>();
};

}  // namespace korval::model
