// SPDX-License-Identifier: MIT
#include "apps/check/FileCheck.h"

#include <string_view>

#include <pugixml.hpp>

#include "apps/check/DescriptionCheck.h"
#include "apps/check/EcuFileCheck.h"
#include "apps/check/FileKind.h"
#include "apps/check/MessagingCheck.h"
#include "apps/check/VocabularyCheck.h"

namespace korval::apps {
namespace {

bool IsDbc(const std::filesystem::path& path) {
  const std::string extension = path.extension().string();
  return extension == ".dbc" || extension == ".DBC";
}

void ReportUnknown(CheckedFile& file, const pugi::xml_node& root) {
  if (std::string_view(root.name()) != "xml") {
    file.Report(root, "the root element must be xml; this is no file of the server.");
    return;
  }
  file.Report(root,
              "holds neither ecu (a description file) nor qor:Target (an ECU file) nor messaging (a CAN "
              "messaging file); names are case-sensitive.");
}

}  // namespace

void CheckFile(CheckedFile& file, const std::optional<std::string>& korv_folder) {
  if (IsDbc(file.Path())) return CheckDbc(file);
  const base::XmlDocument document = file.Parse();
  if (!document) return;
  const pugi::xml_node root = document->document_element();
  CheckVocabulary(file, root);
  switch (KindOf(*document)) {
    case FileKind::kDescription:
      return DescriptionCheck(file, korv_folder.value_or(file.Path().parent_path().string())).Run(root);
    case FileKind::kEcuFile:
      return EcuFileCheck(file).Run(root);
    case FileKind::kMessaging:
      return MessagingCheck(file).Run(root);
    case FileKind::kUnknown:
      return ReportUnknown(file, root);
  }
}

}  // namespace korval::apps
