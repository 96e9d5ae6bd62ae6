#include "xml/xml_dtd.h"

#include <utility>

#include "core/utf8.h"

namespace zantrel {

bool XmlDtd::read(XmlScanner& document) {
  std::string_view name;
  if (!document.read("<!DOCTYPE") || !document.readSpace() || !document.readName(name))
    return false;
  document.skipSpace();
  if (document.peek() == 'S' || document.peek() == 'P') {
    if (!readExternalId(document, PublicAlone::kNo)) return false;
    entities_.isDtdElsewhere = true;
    document.skipSpace();
  }
  if (document.skip('[')) {
    if (!readSubset(document)) return false;
    document.skipSpace();
  }
  entities_.endDtd();
  return document.read(">");
}

bool XmlDtd::readSubset(XmlScanner& document) {
  texts_.assign(1, document);
  for (;;) {
    XmlScanner& text = texts_.back();
    text.skipSpace();
    const bool isDocument = texts_.size() == 1;
    if (isDocument && text.skip(']')) {
      document = text;
      return true;
    }
    if (text.atEnd()) {
      if (isDocument) return text.failHere("The document type declaration has no end.");
      text.entity()->asContent = XmlEntity::Check::kDone;
      texts_.pop_back();
    } else if (text.peek() == '%') {
      if (!readParameterReference()) return false;
    } else if (!readDeclaration(text) && !skipHard()) {
      return false;
    }
  }
}

// Between declarations.
bool XmlDtd::readParameterReference() {
  XmlScanner& text = texts_.back();
  const char* const place = text.at();
  std::string_view name;
  if (!text.readEntityReference(name)) return false;
  entities_.isDtdElsewhere = true;
  XmlEntity* const entity = entities_.findParameter(name);
  if (entity == nullptr || entity->kind != XmlEntity::Kind::kText) {
    entities_.skipPart();
    return true;
  }
  if (entity->asContent == XmlEntity::Check::kRunning)
    return text.fail("The entity refers to itself.", place, "entity", name);
  if (entity->asContent == XmlEntity::Check::kDone) return true;
  entity->asContent = XmlEntity::Check::kRunning;
  texts_.emplace_back(entity->text, fault_, entity);
  return true;
}

// The text of a parameter entity may use others anywhere, and conditional sections. To follow those
// would be to expand them: where one is in the way, the text counts as one that cannot be read.
bool XmlDtd::skipHard() {
  XmlScanner text = texts_.back();
  XmlEntity* const entity = text.entity();
  if (entity == nullptr) return false;
  bool isHard = false;
  if (text.skip("<![")) {
    text.skipSpace();
    isHard = text.peek() == '%' || text.startsWith("INCLUDE") || text.startsWith("IGNORE");
  } else {
    const bool isBehindPercent = text.at() != entity->text.data() && text.at()[-1] == '%';
    const bool isPercent = isBehindPercent || text.skip('%');
    isHard = isPercent && skipXmlName(text.at(), text.end()) != text.at();
  }
  if (!isHard) return false;
  fault_ = XmlFault();
  entities_.skipPart();
  entity->asContent = XmlEntity::Check::kDone;
  texts_.pop_back();
  return true;
}

bool XmlDtd::readDeclaration(XmlScanner& scan) {
  if (scan.startsWith("<!--")) return scan.readComment();
  if (scan.startsWith("<?")) return scan.readInstruction();
  constexpr std::pair<std::string_view, bool (XmlDtd::*)(XmlScanner&)> kKinds[] = {
      {"<!ELEMENT", &XmlDtd::readElement},
      {"<!ATTLIST", &XmlDtd::readAttributeList},
      {"<!ENTITY", &XmlDtd::readEntity},
      {"<!NOTATION", &XmlDtd::readNotation}};
  for (const auto& [start, read] : kKinds)
    if (scan.skip(start)) return scan.readSpace() && (this->*read)(scan);
  return scan.failHere(scan.startsWith("<![")
                           ? "A conditional section must not stand in the document itself."
                           : "A declaration is expected here.");
}

bool XmlDtd::readElement(XmlScanner& scan) {
  std::string_view name;
  if (!scan.readName(name) || !scan.readSpace()) return false;
  if (!scan.skip("EMPTY") && !scan.skip("ANY")) {
    if (!scan.read("(")) return false;
    scan.skipSpace();
    if (!(scan.skip("#PCDATA") ? readMixed(scan) : readModel(scan))) return false;
  }
  scan.skipSpace();
  return scan.read(">");
}

// Behind "(#PCDATA".
bool XmlDtd::readMixed(XmlScanner& scan) {
  bool hasNames = false;
  for (scan.skipSpace(); !scan.skip(')'); scan.skipSpace()) {
    if (!scan.read("|")) return false;
    scan.skipSpace();
    std::string_view name;
    if (!scan.readName(name)) return false;
    hasNames = true;
  }
  return scan.skip('*') || !hasNames || scan.read("*");
}

// Behind "(".
bool XmlDtd::readModel(XmlScanner& scan) {
  constexpr char kNone = '\0';
  const auto skipOccurrence = [&scan] { scan.skip('?') || scan.skip('*') || scan.skip('+'); };
  separators_.assign(1, kNone);
  while (!separators_.empty()) {
    // A name, perhaps as the first of groups.
    for (scan.skipSpace(); scan.skip('('); scan.skipSpace()) separators_.push_back(kNone);
    std::string_view name;
    if (!scan.readName(name)) return false;
    skipOccurrence();
    // The ends of groups.
    for (scan.skipSpace(); !separators_.empty() && scan.skip(')'); scan.skipSpace()) {
      separators_.pop_back();
      skipOccurrence();
    }
    if (separators_.empty()) break;
    const char separator = scan.peek();
    if (separator != '|' && separator != ',') return scan.read(")");
    char& usual = separators_.back();
    if (usual != kNone && usual != separator)
      return scan.failHere("A group must not have both commas and bars.");
    usual = separator;
    scan.skip(separator);
  }
  return true;
}

bool XmlDtd::readAttributeList(XmlScanner& scan) {
  std::string_view name;
  if (!scan.readName(name)) return false;
  for (;;) {
    const bool hasSpace = scan.skipSpace();
    if (scan.skip('>')) return true;
    if (!hasSpace) return scan.readSpace();
    if (!scan.readName(name) || !scan.readSpace() || !readAttributeType(scan) ||
        !scan.readSpace() || !readAttributeDefault(scan))
      return false;
  }
}

bool XmlDtd::readAttributeType(XmlScanner& scan) {
  for (const std::string_view type :
       {"CDATA", "IDREFS", "IDREF", "ID", "ENTITIES", "ENTITY", "NMTOKENS", "NMTOKEN"})
    if (scan.skip(type)) return true;
  const bool isNotation = scan.skip("NOTATION");
  if (isNotation && !scan.readSpace()) return false;
  if (scan.peek() != '(') return scan.failHere("The type of an attribute is expected here.");
  do {
    scan.goTo(scan.at() + 1);
    scan.skipSpace();
    std::string_view name;
    if (!(isNotation ? scan.readName(name) : scan.readNameToken())) return false;
    scan.skipSpace();
  } while (scan.peek() == '|');
  return scan.read(")");
}

bool XmlDtd::readAttributeDefault(XmlScanner& scan) {
  if (scan.skip("#REQUIRED") || scan.skip("#IMPLIED")) return true;
  if (scan.skip("#FIXED") && !scan.readSpace()) return false;
  return entities_.readAttributeValue(scan);
}

bool XmlDtd::readEntity(XmlScanner& scan) {
  XmlEntity entity;
  entity.isFromParameter = scan.entity() != nullptr;
  const bool isParameter = scan.skip('%');
  if ((isParameter && !scan.readSpace()) || !scan.readName(entity.name) || !scan.readSpace())
    return false;
  entity.declaredAt = scan.inDocument(scan.at());
  if (isXmlQuote(scan.peek())) {
    if (!readEntityText(scan, entity)) return false;
  } else {
    if (!readExternalId(scan, PublicAlone::kNo)) return false;
    entity.kind = XmlEntity::Kind::kExternal;
    const bool hasSpace = scan.skipSpace();
    if (!isParameter && scan.startsWith("NDATA")) {
      std::string_view notation;
      if (!hasSpace) return scan.readSpace();
      if (!scan.read("NDATA") || !scan.readSpace() || !scan.readName(notation)) return false;
      entity.kind = XmlEntity::Kind::kUnparsed;
    }
  }
  scan.skipSpace();
  if (!scan.read(">")) return false;
  if (isParameter)
    entities_.declareParameter(std::move(entity));
  else
    entities_.declareGeneral(std::move(entity));
  return true;
}

// References to characters are replaced, those to entities are left for when the entity is used.
bool XmlDtd::readEntityText(XmlScanner& scan, XmlEntity& entity) {
  entity.kind = XmlEntity::Kind::kText;
  entity.isInDocument = scan.isInDocument();
  if (!scan.readQuoted(entity.text)) return false;
  XmlScanner text(entity.text, fault_, scan.entity());
  const char* copied = text.at();
  for (;;) {
    const char* const at = findOneOf<'&', '%', '%'>(text.at(), text.end());
    text.goTo(at);
    if (text.atEnd()) break;
    std::string_view name;
    if (text.peek(1) == '#' && *at == '&') {
      char32_t character = 0;
      if (!text.readCharacterReference(character)) return false;
      char bytes[4];
      entity.copy.append(copied, at);
      entity.copy.append(bytes, encodeUtf8(character, bytes));
      copied = text.at();
      entity.isInDocument = false;
    } else if (*at == '%' && scan.entity() == nullptr) {
      return text.failHere("A parameter entity must not be used inside a declaration.");
    } else {
      if (!text.readEntityReference(name)) return false;
      if (*at == '%') entity.kind = XmlEntity::Kind::kUnknown;
    }
  }
  if (!entity.copy.empty()) entity.copy.append(copied, text.end());
  return true;
}

bool XmlDtd::readNotation(XmlScanner& scan) {
  std::string_view name;
  if (!scan.readName(name) || !scan.readSpace() || !readExternalId(scan, PublicAlone::kYes))
    return false;
  scan.skipSpace();
  return scan.read(">");
}

bool XmlDtd::readExternalId(XmlScanner& scan, PublicAlone publicAlone) {
  std::string_view text;
  if (scan.skip("PUBLIC")) {
    if (!scan.readSpace()) return false;
    const char* const begin = scan.at();
    if (!scan.readQuoted(text)) return false;
    for (const char& c : text)
      if (!isXmlClass(c, kXmlPubid))
        return scan.fail("A public identifier must not hold this character.", begin);
    const bool hasSpace = scan.skipSpace();
    const bool hasMore = isXmlQuote(scan.peek());
    if (!hasMore && publicAlone == PublicAlone::kYes) return true;
    if (!hasSpace) return scan.readSpace();
    return scan.readQuoted(text);
  }
  return scan.read("SYSTEM") && scan.readSpace() && scan.readQuoted(text);
}

}  // namespace zantrel
