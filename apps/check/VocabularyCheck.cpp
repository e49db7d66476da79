// SPDX-License-Identifier: MIT
#include "apps/check/VocabularyCheck.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "ecu/ecufile/Grammar.h"

namespace korval::apps {
namespace {

using Names = std::vector<std::string_view>;

struct Words {
  Names parents;
  Names attributes;
};

using Vocabulary = std::map<std::string_view, Words>;

Vocabulary MakeVocabulary() {
  Vocabulary vocabulary;
  for (const ecu::Element& element : ecu::kGrammar) {
    Words& words = vocabulary[element.name];
    for (const char* parent : ecu::NamesIn(element.parents)) words.parents.emplace_back(parent);
    for (const ecu::Attribute& attribute : element.attributes) words.attributes.emplace_back(attribute.name);
  }
  return vocabulary;
}

bool Contains(const Names& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool SameLetter(char one, char other) {
  return std::tolower(static_cast<unsigned char>(one)) == std::tolower(static_cast<unsigned char>(other));
}

bool SameLetters(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(), SameLetter);
}

// Whether one slip of the hand makes `word` of `known`.
bool IsNear(std::string_view word, std::string_view known) {
  const auto [first, second] =
      std::mismatch(word.begin(), word.end(), known.begin(), known.end(), SameLetter);
  const std::string_view left = word.substr(static_cast<std::size_t>(first - word.begin()));
  const std::string_view right = known.substr(static_cast<std::size_t>(second - known.begin()));
  if (left.empty() || right.empty()) return left.size() + right.size() <= 1;
  if (SameLetters(left.substr(1), right.substr(1)) || SameLetters(left, right.substr(1)) ||
      SameLetters(left.substr(1), right)) {
    return true;
  }
  return left.size() > 1 && right.size() > 1 && SameLetter(left[0], right[1]) &&
         SameLetter(left[1], right[0]) && SameLetters(left.substr(2), right.substr(2));
}

class Reader : public pugi::xml_tree_walker {
 public:
  explicit Reader(CheckedFile& file) : file_(file), words_(MakeVocabulary()) {
    for (const auto& [name, element] : words_) elements_.push_back(name);
  }

  bool for_each(pugi::xml_node& node) override {
    if (node.type() != pugi::node_element) return true;
    const auto known = words_.find(node.name());
    if (known == words_.end()) {
      Suggest(node, "the element", node.name(), elements_);
      return true;
    }
    CheckPlace(node, known->second.parents);
    for (const pugi::xml_attribute& attribute : node.attributes()) {
      Suggest(node, "the attribute", attribute.name(), known->second.attributes);
    }
    return true;
  }

 private:
  void Suggest(const pugi::xml_node& node, const std::string& what, const std::string& word,
               const Names& known) {
    if (Contains(known, word)) return;
    const auto near =
        std::find_if(known.begin(), known.end(), [&](std::string_view name) { return IsNear(word, name); });
    if (near == known.end()) return;
    file_.Report(node, what + " " + word + " is unknown and ignored; is " + std::string(*near) + " meant?");
  }

  void CheckPlace(const pugi::xml_node& node, const Names& parents) {
    const std::string parent = node.parent().name();
    if (Contains(parents, parent) || !words_.contains(parent)) return;
    std::string list;
    for (const std::string_view name : parents) list.append(list.empty() ? "" : " or ").append(name);
    file_.Report(node, "it is ignored inside " + parent + "; it belongs into " + list + ".");
  }

  CheckedFile& file_;
  Vocabulary words_;
  Names elements_;
};

}  // namespace

void CheckVocabulary(CheckedFile& file, const pugi::xml_node& root) {
  Reader reader(file);
  pugi::xml_node(root).traverse(reader);
}

}  // namespace korval::apps
