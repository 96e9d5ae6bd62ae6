#include "xml/xml_entities.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zantrel {

namespace {

constexpr std::array<std::string_view, 5> kOfXmlItself = {"amp", "lt", "gt", "quot", "apos"};

}  // namespace

void XmlEntities::declare(Map& map, XmlEntity&& entity) {
  if (!isReading_) return;
  const auto [place, isNew] = map.try_emplace(entity.name, std::move(entity));
  XmlEntity& declared = place->second;
  if (isNew && !declared.copy.empty()) declared.text = declared.copy;
}

void XmlEntities::skipPart() {
  isReading_ = standalone;
  for (const XmlScanner& unfinished : values_)
    unfinished.entity()->asValue = XmlEntity::Check::kNew;
  values_.clear();
}

void XmlEntities::endDtd() {
  for (auto& [name, entity] : general_) entity.asValue = XmlEntity::Check::kNew;
}

bool XmlEntities::resolve(const XmlScanner& from, const char* place, std::string_view name,
                          XmlEntity*& entity) {
  entity = nullptr;
  if (std::find(kOfXmlItself.begin(), kOfXmlItself.end(), name) != kOfXmlItself.end()) return true;
  XmlEntity* const found = find(general_, name);
  const bool mayBeElsewhere = isDtdElsewhere && !standalone;
  if (found == nullptr)
    return mayBeElsewhere || from.fail("The entity is not declared.", place, "entity", name);
  if (found->isFromParameter && !mayBeElsewhere)
    return from.fail("A parameter entity declares the entity of a standalone document.", place,
                     "entity", name);
  if (found->kind == XmlEntity::Kind::kUnparsed)
    return from.fail("The entity is no text.", place, "entity", name);
  if (found->kind != XmlEntity::Kind::kUnknown) entity = found;
  return true;
}

bool XmlEntities::readAttributeValue(XmlScanner& scan) {
  const char* const begin = scan.at();
  const char quote = scan.peek();
  if (!isXmlQuote(quote)) return scan.failHere("An attribute's value is expected here, in quotes.");
  scan.goTo(begin + 1);
  for (;;) {
    const char* const at = quote == '"' ? findOneOf<'"', '<', '&'>(scan.at(), scan.end())
                                        : findOneOf<'\'', '<', '&'>(scan.at(), scan.end());
    if (at == scan.end()) return scan.fail("The attribute's value has no end.", begin);
    scan.goTo(at);
    if (*at == quote) {
      scan.goTo(at + 1);
      return true;
    }
    if (*at == '<') return scan.failHere("An attribute's value must not hold a bare <.");
    if (!readReferenceInValue(scan)) return false;
  }
}

// At "&". The texts of entities that it leads to are looked through as well; a "<" in them is a
// fault of this place.
bool XmlEntities::readReferenceInValue(XmlScanner& scan) {
  const char* const place = scan.at();
  if (!readReference(scan)) return false;
  while (!values_.empty()) {
    XmlScanner& text = values_.back();
    text.goTo(findOneOf<'<', '&', '&'>(text.at(), text.end()));
    if (text.atEnd()) {
      text.entity()->asValue = XmlEntity::Check::kDone;
      values_.pop_back();
    } else if (text.peek() == '<') {
      return scan.fail("An entity that holds a < must not stand in an attribute's value.", place,
                       "entity", text.entity()->name);
    } else if (!readReference(text)) {
      return false;
    }
  }
  return true;
}

bool XmlEntities::readReference(XmlScanner& scan) {
  const char* const place = scan.at();
  std::string_view name;
  char32_t character = 0;
  if (scan.peek(1) == '#') return scan.readCharacterReference(character);
  // Entering makes a new scanner, which ends the life of this one's place.
  return scan.readEntityReference(name) && enterValue(XmlScanner(scan), place, name);
}

bool XmlEntities::enterValue(const XmlScanner& from, const char* place, std::string_view name) {
  XmlEntity* entity = nullptr;
  if (!resolve(from, place, name, entity)) return false;
  if (entity == nullptr || entity->asValue == XmlEntity::Check::kDone) return true;
  if (entity->kind == XmlEntity::Kind::kExternal)
    return from.fail("An attribute's value must not refer to another file.", place, "entity", name);
  if (entity->asValue == XmlEntity::Check::kRunning)
    return from.fail("The entity refers to itself.", place, "entity", name);
  entity->asValue = XmlEntity::Check::kRunning;
  values_.emplace_back(entity->text, fault_, entity);
  return true;
}

}  // namespace zantrel
