// SPDX-License-Identifier: MIT
// korval_write_schemas FOLDER: writes the schemas of the grammar, after a change of it, to data/schema.
#include <fstream>
#include <iostream>

#include "tests/ecu/ecufile/SchemaText.h"

int main(int count, char** arguments) {
  if (count != 2) {
    std::cerr << "usage: korval_write_schemas FOLDER\n";
    return 2;
  }
  for (const auto& [name, text] : korval::tests::SchemaTexts()) {
    const std::string path = std::string(arguments[1]) + "/" + name;
    if (!(std::ofstream(path, std::ios::binary) << text)) {
      std::cerr << path << " cannot be written\n";
      return 1;
    }
  }
  return 0;
}
