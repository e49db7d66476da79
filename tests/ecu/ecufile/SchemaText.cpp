// SPDX-License-Identifier: MIT
#include "tests/ecu/ecufile/SchemaText.h"

#include <initializer_list>
#include <set>
#include <string_view>
#include <vector>

#include "ecu/ecufile/Grammar.h"
#include "tests/ecu/ecufile/RuleText.h"

namespace korval::tests {
namespace {

using ecu::Attribute;
using ecu::Element;

constexpr std::string_view kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!-- SPDX-License-Identifier: MIT -->\n"
    "<!-- Made of the grammar in ecu/ecufile/Grammar.h by the program korval_write_schemas. -->\n";

// What the readers pass over. Known elements are checked wherever they stand.
constexpr std::string_view kAnything =
    "      <xs:sequence>\n"
    "        <xs:any processContents=\"lax\" minOccurs=\"0\" maxOccurs=\"unbounded\"/>\n"
    "      </xs:sequence>\n";
constexpr std::string_view kAnyAttribute = "      <xs:anyAttribute processContents=\"lax\"/>\n";

std::string Pattern(const std::string& pattern) { return "<xs:pattern value=\"" + pattern + "\"/>"; }

std::string HexPattern(const Attribute& rule) {
  std::string pattern = "0*[0-9A-Fa-f]{1," + std::to_string(HexDigits(rule.highest)) + "}";
  if (*rule.word != '\0') pattern += std::string("|") + rule.word;
  return Pattern(pattern);
}

std::string BytesPattern(const Attribute& rule) {
  const std::string count = rule.lowest == rule.highest ? "{" + std::to_string(rule.lowest) + "}"
                            : rule.lowest > 0           ? "+"
                                                        : "*";
  return Pattern("( *[0-9A-Fa-f] *[0-9A-Fa-f])" + count + " *");
}

std::string ChoiceFacets(const Attribute& rule) {
  // An empty text counts as absent.
  std::string facets = rule.fallback ? "<xs:enumeration value=\"\"/>" : "";
  for (const char* choice : ecu::NamesIn(rule.choices)) {
    facets += std::string("<xs:enumeration value=\"") + choice + "\"/>";
  }
  return facets;
}

std::string RangeFacets(const Attribute& rule) {
  return "<xs:minInclusive value=\"" + std::to_string(rule.lowest) + "\"/><xs:maxInclusive value=\"" +
         std::to_string(rule.highest) + "\"/>";
}

struct Type {
  std::string base;
  std::string facets;  // "": the base itself
};

Type TypeOf(const Attribute& rule) {
  switch (rule.kind) {
    case Attribute::Kind::kText:
      return {"xs:string", rule.required ? "<xs:minLength value=\"1\"/>" : ""};
    case Attribute::Kind::kInteger:
      return {"xs:int", RangeFacets(rule)};
    case Attribute::Kind::kRaw:
      return {"xs:long", ""};
    case Attribute::Kind::kNumber:
      return {"xs:string", Pattern("\\s*\\+?-?([0-9]+(\\.[0-9]*)?|\\.[0-9]+)([eE][+\\-]?[0-9]+)?\\s*")};
    case Attribute::Kind::kHex:
      return {"xs:string", HexPattern(rule)};
    case Attribute::Kind::kIdentifier:
      return {"xs:string", Pattern("0{0,4}[0-7]?[0-9A-Fa-f]{1,2}|[01][0-9A-Fa-f]{7}")};
    case Attribute::Kind::kBytes:
      return {"xs:string", BytesPattern(rule)};
    case Attribute::Kind::kChoice:
      return {"xs:string", rule.open ? "" : ChoiceFacets(rule)};
  }
  return {};
}

std::string Documentation(const std::string& text, const std::string& indent) {
  if (text.empty()) return {};
  return indent + "<xs:annotation><xs:documentation>" + text + "</xs:documentation></xs:annotation>\n";
}

// The files of a host with a session of its own name their items and need not say where they stand.
bool IsRequired(const Attribute& rule) { return rule.required && rule.kind != Attribute::Kind::kInteger; }

std::string AttributeText(const Attribute& rule) {
  const Type type = TypeOf(rule);
  const std::string head = std::string("      <xs:attribute name=\"") + rule.name + "\"" +
                           (IsRequired(rule) ? " use=\"required\"" : "");
  const std::string documentation = Documentation(Described(rule), "        ");
  if (type.facets.empty() && documentation.empty()) return head + " type=\"" + type.base + "\"/>\n";
  if (type.facets.empty()) {
    return head + " type=\"" + type.base + "\">\n" + documentation + "      </xs:attribute>\n";
  }
  return head + ">\n" + documentation + "        <xs:simpleType><xs:restriction base=\"" + type.base + "\">" +
         type.facets + "</xs:restriction></xs:simpleType>\n      </xs:attribute>\n";
}

std::string PlaceOf(const Element& element) {
  std::string places;
  for (const char* parent : ecu::NamesIn(element.parents)) {
    places.append(places.empty() ? "Stands in " : " or ").append(parent);
  }
  if (places.empty()) return "The root.";
  if (element.count == Element::Count::kNeeded) places += "; there must be one";
  return places + (element.count == Element::Count::kAny ? "." : "; the first one serves.");
}

std::string ElementText(const Element& element) {
  std::string text = std::string("  <xs:element name=\"") + element.name + "\">\n" +
                     Documentation(PlaceOf(element), "    ") + "    <xs:complexType mixed=\"true\">\n" +
                     std::string(kAnything);
  for (const Attribute& attribute : element.attributes) text += AttributeText(attribute);
  return text + std::string(kAnyAttribute) + "    </xs:complexType>\n  </xs:element>\n";
}

// The elements that a file of one kind has below its root, from those that stand there.
std::vector<const Element*> Below(std::initializer_list<std::string_view> tops) {
  std::set<std::string_view> known(tops);
  std::vector<const Element*> elements;
  for (bool grown = true; grown;) {
    grown = false;
    for (const Element& element : ecu::kGrammar) {
      for (const char* parent : ecu::NamesIn(element.parents)) {
        if (known.contains(parent)) grown |= known.insert(element.name).second;
      }
    }
  }
  for (const Element& element : ecu::kGrammar) {
    if (known.contains(element.name)) elements.push_back(&element);
  }
  return elements;
}

std::string Schema(const std::string& root, std::initializer_list<std::string_view> tops) {
  std::string text =
      std::string(kHead) + "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">\n" + root;
  for (const Element* element : Below(tops)) {
    if (element->name != std::string_view(ecu::grammar::kTarget.name)) text += ElementText(*element);
  }
  return text + "</xs:schema>\n";
}

// The root of an ECU file holds a target, which is in a namespace and so in a schema of its own.
constexpr std::string_view kEcuRoot =
    "  <xs:import namespace=\"urn:korval:ecu\" schemaLocation=\"ecu-target.xsd\"/>\n"
    "  <xs:element name=\"xml\" xmlns:qor=\"urn:korval:ecu\" type=\"qor:File\"/>\n";

constexpr std::string_view kTargetSchema =
    "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\" xmlns:qor=\"urn:korval:ecu\"\n"
    "           targetNamespace=\"urn:korval:ecu\">\n"
    "  <xs:complexType name=\"File\" mixed=\"true\">\n"
    "    <xs:sequence>\n"
    "      <xs:group ref=\"qor:Others\"/>\n"
    "      <xs:sequence maxOccurs=\"unbounded\">\n"
    "        <xs:element ref=\"qor:Target\"/>\n"
    "        <xs:group ref=\"qor:Others\"/>\n"
    "      </xs:sequence>\n"
    "    </xs:sequence>\n"
    "    <xs:anyAttribute processContents=\"lax\"/>\n"
    "  </xs:complexType>\n"
    "  <xs:group name=\"Others\">\n"
    "    <xs:sequence>\n"
    "      <xs:choice minOccurs=\"0\" maxOccurs=\"unbounded\">\n"
    "        <xs:any namespace=\"##local\" processContents=\"lax\"/>\n"
    "        <xs:any namespace=\"##other\" processContents=\"lax\"/>\n"
    "      </xs:choice>\n"
    "    </xs:sequence>\n"
    "  </xs:group>\n"
    "  <xs:element name=\"Target\">\n"
    "    <xs:complexType mixed=\"true\">\n"
    "      <xs:sequence>\n"
    "        <xs:any processContents=\"lax\" minOccurs=\"0\" maxOccurs=\"unbounded\"/>\n"
    "      </xs:sequence>\n"
    "      <xs:anyAttribute processContents=\"lax\"/>\n"
    "    </xs:complexType>\n"
    "  </xs:element>\n"
    "</xs:schema>\n";

}  // namespace

std::map<std::string, std::string> SchemaTexts() {
  const std::string root = ElementText(ecu::grammar::kXml);
  return {
      {"description-file.xsd", Schema(root, {"ecu"})},
      {"ecu-file.xsd", Schema(std::string(kEcuRoot), {"qor:Target", "Simulation"})},
      {"ecu-target.xsd", std::string(kHead) + std::string(kTargetSchema)},
      {"messaging-file.xsd", Schema(root, {"messaging"})},
  };
}

}  // namespace korval::tests
