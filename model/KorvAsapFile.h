// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "base/ByteBuffer.h"
#include "diag/ScriptFile.h"
#include "model/DtcStore.h"
#include "model/FileContents.h"
#include "model/Folders.h"

namespace korval::model {

/// One selected description file. It maps the client's short names to the data items of one ECU function:
///   /xml/ecu[name = section]          url: the ECU file;  data children: name (data item), shortname
///   /xml/ecu[name = 'AUTOCAN']        url: the CAN messaging file
/// of the ECU file its function, and which of those data items it offers. What was read is shared with the
/// files that are selected alike. Commands share ownership of the file for as long as they work on it,
/// because the collection may be emptied while they wait.
class KorvAsapFile : public diag::ScriptFile {
 public:
  /// A raw diagnostic request and its answer.
  struct RawExchange {
    base::ByteBuffer request;
    base::ByteBuffer answer;
  };

  /// `contents` are those of the session.
  KorvAsapFile(Folders folders, std::string description_file, std::string binary_file,
               std::int32_t destination, std::int32_t id,
               std::shared_ptr<FileContents> contents = std::make_shared<FileContents>());

  /// Number in the collection, which the client uses as LUN.
  std::int32_t Id() const { return id_; }
  /// Name relative to the ASAP folder, section and address, as the client gave them.
  const std::string& DescriptionFile() const { return description_file_; }
  const std::string& BinaryFile() const override { return binary_file_; }
  std::int32_t Destination() const { return destination_; }
  /// Full path of the ECU file and the name of its function; "" before both are loaded.
  const std::string& KorvFileName() const;
  const std::string& KorvFunction() const override;

  /// Loads the description file and the ECU file its section points to. Raises Failure with a text for
  /// the client; the file then stays without names.
  void ReadDescriptionFile(const FileContents::ReadEcuFile& read_ecu_file);
  /// Whether a data item that the ECU returns has this short name.
  bool IsDataExist(const std::string& data_name) const;
  std::string KorvDataName(const std::string& asap_data_name) const override;
  /// Full path of the CAN messaging file, "" when none is named. Raises Failure when its name leads out of
  /// the folder.
  std::string GetAutoCanFile() const;
  /// Gives the ECU file away, which only the session still needs.
  FileContents::EcuFile TakeEcuFile() { return std::move(ecu_file_); }

  std::shared_ptr<viator3::InstanceObject> WshObject() const override { return wsh_object_; }
  void SetWshObject(std::shared_ptr<viator3::InstanceObject> object) override {
    wsh_object_ = std::move(object);
  }

  DtcStore& Dtcs() { return dtcs_; }
  /// The last raw request, null when there is none.
  std::shared_ptr<RawExchange> LastRawExchange() const { return raw_exchange_; }
  void SetLastRawExchange(std::shared_ptr<RawExchange> exchange) { raw_exchange_ = std::move(exchange); }

  /// What the console shows as the ECU's identification; "" until it has been read.
  const std::string& Identification() const { return identification_; }
  void SetIdentification(const std::string& text) { identification_ = text; }

 private:
  Folders folders_;
  std::string description_file_;
  std::string binary_file_;
  std::int32_t destination_;
  std::int32_t id_;
  std::shared_ptr<FileContents> contents_;
  std::shared_ptr<const FileContent> content_;  // null until it is loaded
  FileContents::EcuFile ecu_file_;
  std::shared_ptr<viator3::InstanceObject> wsh_object_;
  DtcStore dtcs_;
  std::shared_ptr<RawExchange> raw_exchange_;
  std::string identification_;
};

}  // namespace korval::model
