// SPDX-License-Identifier: MIT
#include "model/KorvAsapValues.h"

namespace korval::model {

std::shared_ptr<KorvAsapValue> KorvAsapValues::Add(const std::string& value_name, std::int32_t lun_id,
                                                   const std::string& korv_name, const std::string& key) {
  auto value = std::make_shared<KorvAsapValue>();
  value->valueName = value_name;
  value->lunId = lun_id;
  value->korvName = korv_name;
  Append(value, key);
  return value;
}

}  // namespace korval::model
