// Characters come first: a pass that does most of them 16 at a time. The one over the grammar need
// not care for them then.

#include "xml/well_formed.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

#include "core/byte_order.h"
#include "core/encode/hex.h"
#include "core/log_base.h"
#include "core/utf8.h"
#include "xml/unique_names.h"
#include "xml/xml_dtd.h"
#include "xml/xml_entities.h"
#include "xml/xml_scanner.h"

namespace zantrel {

namespace {

class Checker final {
 public:
  Checker(std::string_view document, XmlFault& fault)
      : fault_(fault), entities_(fault), scan_(document, fault) {}

  bool check();

 private:
  struct Text {  // one that a reference interrupts
    XmlScanner scan;
    std::size_t firstTag;
  };

  bool readDeclaration();
  bool readPseudoAttribute(std::string_view name, std::string_view& value);
  bool readMiscellaneous();
  bool readProlog();
  bool readContent();
  bool readMarkup();
  bool readStartTag();
  bool readAttributes();
  bool readClosingTag();
  bool readCdata();
  bool readReference();
  bool leaveEntity();

  XmlFault& fault_;
  XmlEntities entities_;
  XmlScanner scan_;  // in the document or, in content, in the text of an entity
  std::vector<Text> interrupted_;
  std::vector<std::string_view> tags_;  // of open elements
  std::size_t firstTag_ = 0;            // of the text that is read
  UniqueNames attributes_;
};

bool Checker::check() {
  scan_.skip("\xEF\xBB\xBF");
  if (scan_.startsWith("<?xml") && isXmlClass(scan_.peek(5), kXmlSpace) && !readDeclaration())
    return false;
  if (!readProlog() || !readStartTag() || !readContent() || !readMiscellaneous()) return false;
  if (scan_.atEnd()) return true;
  return scan_.failHere(
      "Only comments and processing instructions may follow the document's element.");
}

bool Checker::readDeclaration() {
  std::string_view value;
  scan_.skip("<?xml");
  if (!scan_.readSpace()) return false;
  const char* place = scan_.at();
  if (!readPseudoAttribute("version", value)) return false;
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  if (!value.starts_with("1.") || value.size() == 2 ||
      !std::all_of(value.begin() + 2, value.end(), isDigit))
    return scan_.fail("This is no version of XML.", place, "version", value);
  bool hasSpace = scan_.skipSpace();
  place = scan_.at();
  if (hasSpace && scan_.peek() == 'e') {
    if (!readPseudoAttribute("encoding", value)) return false;
    const auto isOfName = [](char c) { return isXmlClass(c, kXmlName) && c != ':'; };
    const char first = value.empty() ? '\0' : value[0];
    if (!isXmlClass(first, kXmlNameStart) || first == '_' ||
        !std::all_of(value.begin(), value.end(), isOfName))
      return scan_.fail("This is no name of an encoding.", place, "encoding", value);
    hasSpace = scan_.skipSpace();
    place = scan_.at();
  }
  if (hasSpace && scan_.peek() == 's') {
    if (!readPseudoAttribute("standalone", value)) return false;
    entities_.standalone = value == "yes";
    if (value != "yes" && value != "no")
      return scan_.fail("A document is standalone or not: yes or no.", place, "standalone", value);
    scan_.skipSpace();
  }
  return scan_.read("?>");
}

bool Checker::readPseudoAttribute(std::string_view name, std::string_view& value) {
  return scan_.read(name) && scan_.readEquals() && scan_.readQuoted(value);
}

// Comments, processing instructions and white space.
bool Checker::readMiscellaneous() {
  for (;;) {
    scan_.skipSpace();
    if (scan_.startsWith("<!--")) {
      if (!scan_.readComment()) return false;
    } else if (scan_.startsWith("<?")) {
      if (!scan_.readInstruction()) return false;
    } else {
      return true;
    }
  }
}

// Up to the document's element.
bool Checker::readProlog() {
  if (!readMiscellaneous()) return false;
  if (scan_.startsWith("<!DOCTYPE")) {
    XmlDtd dtd(entities_, fault_);
    if (!dtd.read(scan_) || !readMiscellaneous()) return false;
  }
  return scan_.peek() == '<' || scan_.failHere("The document's element is expected here.");
}

// Up to the end of the document's element.
bool Checker::readContent() {
  while (!tags_.empty()) {
    const char* at = scan_.at();
    if (scan_.peek() != '<') at = findOneOf<'<', '&', ']'>(at, scan_.end());
    scan_.goTo(at);
    if (at == scan_.end()) {
      if (!leaveEntity()) return false;
    } else if (*at == '<') {
      if (!readMarkup()) return false;
    } else if (*at == '&') {
      if (!readReference()) return false;
    } else if (scan_.startsWith("]]>")) {
      return scan_.failHere("Text must not hold the end of a CDATA section.");
    } else {
      scan_.goTo(at + 1);
    }
  }
  return true;
}

bool Checker::readMarkup() {
  switch (scan_.peek(1)) {
    case '/':
      return readClosingTag();
    case '?':
      return scan_.readInstruction();
    case '!':
      if (scan_.startsWith("<!--")) return scan_.readComment();
      if (scan_.startsWith("<![CDATA[")) return readCdata();
      return scan_.failHere("In content, <! begins a comment or a CDATA section only.");
    default:
      return readStartTag();
  }
}

inline bool Checker::readStartTag() {
  const char* const name = scan_.at() + 1;
  const char* const nameEnd = skipXmlName(name, scan_.end());
  if (nameEnd == name) return scan_.failHere("Neither a tag nor other markup begins with this <.");
  tags_.emplace_back(name, static_cast<std::size_t>(nameEnd - name));
  scan_.goTo(nameEnd);
  return scan_.skip('>') || readAttributes();
}

// An attribute as nearly all are written: without white space and references. Goes behind it and
// returns its name, or stays and returns an empty one.
inline std::string_view skipPlainAttribute(const char*& at, const char* end) {
  const char* const name = at;
  const char* const nameEnd = skipXmlName(name, end);
  if (nameEnd == name || end - nameEnd < 3 || *nameEnd != '=') return {};
  const char* const value = nameEnd + 2;
  const char quote = value[-1];
  const char* valueEnd = end;
  if (quote == '"')
    valueEnd = findOneOf<'"', '<', '&'>(value, end);
  else if (quote == '\'')
    valueEnd = findOneOf<'\'', '<', '&'>(value, end);
  if (valueEnd == end || *valueEnd != quote) return {};
  at = valueEnd + 1;
  return {name, static_cast<std::size_t>(nameEnd - name)};
}

// Behind the tag's name or in it.
bool Checker::readAttributes() {
  attributes_.clear();
  for (;;) {
    const bool hasSpace = scan_.skipSpace();
    if (scan_.skip('>')) break;
    if (scan_.skip('/')) {
      if (!scan_.read(">")) return false;
      tags_.pop_back();
      break;
    }
    if (!hasSpace)
      return scan_.fail("An attribute or the end of the tag is expected here.", scan_.at(), "tag",
                        tags_.back());
    const char* at = scan_.at();
    std::string_view name = skipPlainAttribute(at, scan_.end());
    scan_.goTo(at);
    const bool isDone = !name.empty() || (scan_.readName(name) && scan_.readEquals() &&
                                          entities_.readAttributeValue(scan_));
    if (!isDone) return false;
    attributes_.add(name);
  }
  const std::string_view* const twice = attributes_.findTwice();
  return twice == nullptr ||
         scan_.fail("The element has the attribute twice.", twice->data(), "attribute", *twice);
}

// Names are short: most compare in two words, or three bytes, which may overlap.
inline bool isSameName(const char* a, const char* b, std::size_t size) {
  const auto word = [](const char* at) {
    return loadWord<std::uint64_t, std::endian::native>(reinterpret_cast<const std::uint8_t*>(at));
  };
  if (size > 16) return std::memcmp(a, b, size) == 0;
  if (size >= 8) return word(a) == word(b) && word(a + size - 8) == word(b + size - 8);
  const auto half = [](const char* at) {
    return loadWord<std::uint32_t, std::endian::native>(reinterpret_cast<const std::uint8_t*>(at));
  };
  if (size >= 4) return half(a) == half(b) && half(a + size - 4) == half(b + size - 4);
  return a[0] == b[0] && a[size / 2] == b[size / 2] && a[size - 1] == b[size - 1];
}

inline bool Checker::readClosingTag() {
  const char* const begin = scan_.at();
  if (tags_.size() == firstTag_)
    return scan_.failHere("The tag closes an element that does not begin in the same entity.");
  const std::string_view tag = tags_.back();
  const char* const name = begin + 2;
  scan_.goTo(name);
  if (scan_.left() > tag.size() && name[tag.size()] == '>' &&
      isSameName(name, tag.data(), tag.size())) {
    scan_.goTo(name + tag.size() + 1);
    tags_.pop_back();
    return true;
  }
  const bool isSame = scan_.skip(tag) && skipXmlNameRest(scan_.at(), scan_.end()) == scan_.at();
  if (!isSame)
    return scan_.fail("The tag closes another element than the open one.", begin, "openElement",
                      tag);
  scan_.skipSpace();
  tags_.pop_back();
  return scan_.read(">");
}

bool Checker::readCdata() {
  constexpr std::string_view kEnd = "]]>";
  const std::size_t size = std::string_view(scan_.at(), scan_.left()).find(kEnd);
  if (size == std::string_view::npos) return scan_.failHere("The CDATA section has no end.");
  scan_.goTo(scan_.at() + size + kEnd.size());
  return true;
}

// At "&". The text of an entity must be content by itself, which is checked where it is first used.
bool Checker::readReference() {
  const char* const place = scan_.at();
  if (scan_.peek(1) == '#') {
    char32_t character = 0;
    return scan_.readCharacterReference(character);
  }
  std::string_view name;
  XmlEntity* entity = nullptr;
  if (!scan_.readEntityReference(name) || !entities_.resolve(scan_, place, name, entity))
    return false;
  if (entity == nullptr || entity->kind == XmlEntity::Kind::kExternal ||
      entity->asContent == XmlEntity::Check::kDone)
    return true;
  if (entity->asContent == XmlEntity::Check::kRunning)
    return scan_.fail("The entity refers to itself.", place, "entity", name);
  entity->asContent = XmlEntity::Check::kRunning;
  interrupted_.push_back({scan_, firstTag_});
  scan_ = XmlScanner(entity->text, fault_, entity);
  firstTag_ = tags_.size();
  return true;
}

// At the end of a text.
bool Checker::leaveEntity() {
  if (tags_.size() != firstTag_)
    return scan_.fail("The element is not closed.", tags_.back().data() - 1, "openElement",
                      tags_.back());
  scan_.entity()->asContent = XmlEntity::Check::kDone;
  scan_ = interrupted_.back().scan;
  firstTag_ = interrupted_.back().firstTag;
  interrupted_.pop_back();
  return true;
}

XmlFault ofCharacter(const char* at, const char* end) {
  const char32_t c = decodeUtf8({at, static_cast<std::size_t>(end - at)}).value;
  XmlFault fault;
  fault.at = at;
  fault.text = "The bytes here are not UTF-8.";
  if (c == kNoCharacter) return fault;
  fault.text = "XML does not allow this character.";
  fault.label = "character";
  fault.value = "U+";
  for (int shift = 12; shift >= 0; shift -= 4) fault.value += kHexDigits[c >> shift & 0xF];
  return fault;
}

}  // namespace

bool checkWellFormed(std::string_view utf8Document, LogBase& log) {
  const char* const end = utf8Document.data() + utf8Document.size();
  const char* const illegal = findIllegalCharacter(utf8Document);
  XmlFault fault;
  if (illegal != end)
    fault = ofCharacter(illegal, end);
  else
    Checker(utf8Document, fault).check();
  if (fault.text == nullptr) return true;
  fault.log(utf8Document, log);
  return false;
}

}  // namespace zantrel
