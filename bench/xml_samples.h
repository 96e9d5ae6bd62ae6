#pragma once
// Documents of the kinds that programs exchange, generated up to a size.

#include <cstddef>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace zantrel::bench {

namespace xml_samples {

using Random = std::mt19937;

inline unsigned below(Random& random, unsigned limit) {
  return static_cast<unsigned>(random() % limit);
}

inline std::string number(Random& random, unsigned limit) {
  return std::to_string(below(random, limit));
}

inline std::string_view word(Random& random) {
  constexpr std::string_view kWords[] = {
      "harbour",  "of",   "and",     "timber", "invoice",    "the",   "northern",
      "a",        "to",   "quarter", "stone",  "open",       "in",    "letter",
      "carriage", "is",   "without", "market", "answer",     "clear", "on",
      "seven",    "road", "whole",   "for",    "caf\xC3\xA9"};
  return kWords[random() % std::size(kWords)];
}

inline std::string words(Random& random, unsigned count) {
  std::string text(word(random));
  while (--count > 0) text.append(" ").append(word(random));
  return text;
}

}  // namespace xml_samples

/// A table as databases export it: short fields, a line each.
inline std::string recordDocument(std::size_t size) {
  xml_samples::Random random(1);
  std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<records>\n";
  for (unsigned id = 1; xml.size() < size; ++id) {
    xml += "  <record id=\"" + std::to_string(id) + "\">\n    <name>" +
           xml_samples::words(random, 2) + "</name>\n    <price>" +
           xml_samples::number(random, 1000) + ".95</price>\n    <count>" +
           xml_samples::number(random, 100) + "</count>\n    <place>" +
           xml_samples::words(random, 1 + id % 3) + (id % 8 == 0 ? " &amp; sons" : "") +
           "</place>\n    <note/>\n  </record>\n";
  }
  return xml + "</records>\n";
}

/// Towers of up to a hundred elements, without white space.
inline std::string deepDocument(std::size_t size) {
  constexpr std::string_view kTags[] = {"group", "div", "section", "ns:item", "b"};
  xml_samples::Random random(2);
  std::string xml = "<tree xmlns:ns=\"urn:items\">";
  while (xml.size() < size) {
    const unsigned depth = 20 + xml_samples::below(random, 80);
    for (unsigned i = 0; i < depth; ++i)
      xml.append("<").append(kTags[i % std::size(kTags)]).append(i % 4 == 0 ? " k=\"1\">" : ">");
    xml += xml_samples::words(random, 3);
    for (unsigned i = depth; i-- > 0;)
      xml.append("</").append(kTags[i % std::size(kTags)]).append(">");
  }
  return xml + "</tree>";
}

/// Settings or drawings: all in attributes.
inline std::string attributeDocument(std::size_t size) {
  xml_samples::Random random(3);
  std::string xml = "<?xml version=\"1.0\"?>\n<drawing width=\"800\" height=\"600\">\n";
  while (xml.size() < size) {
    xml += "  <rect x=\"" + xml_samples::number(random, 800) + "\" y=\"" +
           xml_samples::number(random, 600) + "\" width=\"" + xml_samples::number(random, 90) +
           "\" height=\"" + xml_samples::number(random, 90) +
           "\" style=\"fill:none;stroke:black\" class=\"" + xml_samples::words(random, 2) +
           "\" visible=\"true\" title=\"" + xml_samples::words(random, 4) +
           (random() % 8 == 0 ? " &amp; more" : "") + "\"/>\n";
  }
  return xml + "</drawing>\n";
}

/// Chapters of prose with few marks in it.
inline std::string textDocument(std::size_t size) {
  xml_samples::Random random(4);
  std::string xml = "<?xml version=\"1.0\"?>\n<book>\n";
  while (xml.size() < size) {
    xml += "<para>";
    for (unsigned lines = 5 + xml_samples::below(random, 10); lines > 0; --lines) {
      xml += xml_samples::words(random, 12);
      xml += random() % 16 == 0 ? " &lt;sic&gt;" : random() % 4 == 0 ? ", it's said,\n" : ".\n";
    }
    xml += "<em>" + xml_samples::words(random, 4) + "</em></para>\n";
  }
  return xml + "</book>\n";
}

}  // namespace zantrel::bench
