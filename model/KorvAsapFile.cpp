// SPDX-License-Identifier: MIT
#include "model/KorvAsapFile.h"

#include <filesystem>
#include <utility>

#include "base/FolderPath.h"

namespace korval::model {
namespace {

constexpr char kAutoCanSection[] = "AUTOCAN";

const std::string kNotLoaded;

}  // namespace

KorvAsapFile::KorvAsapFile(Folders folders, std::string description_file, std::string binary_file,
                           std::int32_t destination, std::int32_t id, std::shared_ptr<FileContents> contents)
    : folders_(std::move(folders)),
      description_file_(std::move(description_file)),
      binary_file_(std::move(binary_file)),
      destination_(destination),
      id_(id),
      contents_(std::move(contents)) {}

const std::string& KorvAsapFile::KorvFileName() const {
  return content_ ? content_->korv_file_name : kNotLoaded;
}

const std::string& KorvAsapFile::KorvFunction() const {
  return content_ ? content_->korv_function : kNotLoaded;
}

void KorvAsapFile::ReadDescriptionFile(const FileContents::ReadEcuFile& read_ecu_file) {
  auto [content, ecu_file] = contents_->Load(folders_, description_file_, binary_file_, read_ecu_file);
  content_ = std::move(content);
  ecu_file_ = std::move(ecu_file);
}

bool KorvAsapFile::IsDataExist(const std::string& data_name) const {
  return content_ && content_->short_names.contains(data_name);
}

std::string KorvAsapFile::KorvDataName(const std::string& asap_data_name) const {
  if (!content_) return {};
  const auto found = content_->short_names.find(asap_data_name);
  return found == content_->short_names.end() ? std::string() : std::string(found->second);
}

std::string KorvAsapFile::GetAutoCanFile() const {
  if (!content_) return {};
  const pugi::xml_attribute url = SectionOf(*content_->description, kAutoCanSection).attribute("url");
  if (!url) return {};
  if (*url.value() == '\0') return (std::filesystem::path(folders_.korv) / "").string();  // loading it fails
  return base::PathInFolder(folders_.korv, url.value()).string();
}

}  // namespace korval::model
