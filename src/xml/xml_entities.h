#pragma once
// The entities that a DTD declares, and what references to them may stand for.

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "core/bytes.h"
#include "core/sip_hash.h"
#include "xml/xml_scanner.h"

namespace zantrel {

/// References are not expanded: each entity's text is looked through once for every use that is
/// made of it, so that what would expand to gigabytes costs no more than its declarations.
class XmlEntities final {
 public:
  explicit XmlEntities(XmlFault& fault) : fault_(fault) {}

  bool standalone = false;
  /// The DTD has parts elsewhere, or refers to parameter entities.
  bool isDtdElsewhere = false;

  /// From here on nothing is known of entities, since a part of the DTD cannot be read that may
  /// have declared them before. What is standalone does not depend on such parts.
  void skipPart();
  /// The first declaration of a name counts.
  void declareGeneral(XmlEntity&& entity) { declare(general_, std::move(entity)); }
  void declareParameter(XmlEntity&& entity) { declare(parameter_, std::move(entity)); }
  XmlEntity* findParameter(std::string_view name) { return find(parameter_, name); }
  /// The DTD ends. Values that are looked through in it may refer to entities that come later.
  void endDtd();

  /// Checks a reference at a place of a text. `entity` is null when there is nothing more to know:
  /// a character of XML itself, or an entity that others may declare.
  bool resolve(const XmlScanner& from, const char* place, std::string_view name,
               XmlEntity*& entity);
  /// An attribute's value in quotes.
  bool readAttributeValue(XmlScanner& scan);

 private:
  struct Hash {
    std::size_t operator()(std::string_view text) const {
      return static_cast<std::size_t>(sipHash(
          processSipKey(), {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}));
    }
  };
  using Map = std::unordered_map<std::string_view, XmlEntity, Hash>;

  void declare(Map& map, XmlEntity&& entity);
  static XmlEntity* find(Map& map, std::string_view name) {
    const auto found = map.find(name);
    return found != map.end() ? &found->second : nullptr;
  }
  bool readReferenceInValue(XmlScanner& scan);
  bool readReference(XmlScanner& scan);
  bool enterValue(const XmlScanner& from, const char* place, std::string_view name);

  XmlFault& fault_;
  Map general_, parameter_;
  bool isReading_ = true;
  std::vector<XmlScanner> values_;  // texts under check, each referred to in the one before it
};

}  // namespace zantrel
