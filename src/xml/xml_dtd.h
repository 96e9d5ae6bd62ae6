#pragma once

#include <string_view>
#include <vector>

#include "xml/xml_entities.h"

namespace zantrel {

/// Checks a document type declaration with its internal subset, and collects the entities that it
/// declares. The texts of parameter entities are checked where they are referred to, once each;
/// those that use others inside of declarations, or conditional sections, as far as these come.
class XmlDtd final {
 public:
  XmlDtd(XmlEntities& entities, XmlFault& fault) : entities_(entities), fault_(fault) {}

  /// At "<!DOCTYPE".
  bool read(XmlScanner& document);

 private:
  enum class PublicAlone : bool { kNo, kYes };

  bool readSubset(XmlScanner& document);
  bool readParameterReference();
  bool readDeclaration(XmlScanner& scan);
  bool skipHard();
  bool readElement(XmlScanner& scan);
  bool readMixed(XmlScanner& scan);
  bool readModel(XmlScanner& scan);
  bool readAttributeList(XmlScanner& scan);
  bool readAttributeType(XmlScanner& scan);
  bool readAttributeDefault(XmlScanner& scan);
  bool readEntity(XmlScanner& scan);
  bool readEntityText(XmlScanner& scan, XmlEntity& entity);
  bool readNotation(XmlScanner& scan);
  bool readExternalId(XmlScanner& scan, PublicAlone publicAlone);

  XmlEntities& entities_;
  XmlFault& fault_;
  std::vector<XmlScanner> texts_;  // the subset, and parameter entities in it and in each other
  std::vector<char> separators_;   // of the groups of a content model that are open
};

}  // namespace zantrel
