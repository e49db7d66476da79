// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "base/FileStamp.h"
#include "base/XmlFile.h"
#include "diag/viator3.h"

namespace korval::ecu {

/// An ECU file as it was read.
class XmlEcuFile : public viator3::EcuFile {
 public:
  XmlEcuFile(std::string path, base::FileStamp stamp, base::XmlDocument document);

  const std::string& Path() const override { return path_; }
  const std::string& Function() const override { return function_; }
  /// Items of the answers that are marked with Ref="1".
  Names Offered(const Names& names) const override;

  /// Taken before the file was read.
  const base::FileStamp& Stamp() const { return stamp_; }
  const base::XmlDocument& Document() const { return document_; }

 private:
  std::string path_;
  base::FileStamp stamp_;
  base::XmlDocument document_;
  std::string function_;
};

}  // namespace korval::ecu
