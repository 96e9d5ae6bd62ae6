#pragma once
// What Expat and libxml2 think of documents, where they are installed, and why they may differ with
// the library. Both are told the encoding, libxml2 to leave namespaces alone.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "support/recorded_log.h"
#include "xml/well_formed.h"

#ifdef ZANTREL_HAVE_EXPAT
#define XML_DTD 1  // as it is built; the header then declares the handling of parameter entities
#include <expat.h>
#endif
#ifdef ZANTREL_HAVE_LIBXML2
#include <libxml/parser.h>
#endif

namespace zantrel::test {

struct XmlVerdict {
  std::string error;  // empty for a document that is well-formed
  int code = 0;
};

inline XmlVerdict judgeXml(const std::string& document) {
  RecordedLog log;
  return {checkWellFormed(document, log) ? "" : log.text()};
}

#ifdef ZANTREL_HAVE_EXPAT
inline XmlVerdict judgeByExpat(const std::string& document) {
  XML_Parser parser = XML_ParserCreate("UTF-8");
  XML_SetParamEntityParsing(parser, XML_PARAM_ENTITY_PARSING_ALWAYS);
  XmlVerdict verdict;
  if (XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1) != XML_STATUS_OK) {
    verdict.code = XML_GetErrorCode(parser);
    verdict.error = XML_ErrorString(XML_GetErrorCode(parser));
  }
  XML_ParserFree(parser);
  return verdict;
}
#endif

#ifdef ZANTREL_HAVE_LIBXML2
inline XmlVerdict judgeByLibxml2(const std::string& document) {
  // It would write to standard error, whatever the options are.
  xmlSetStructuredErrorFunc(nullptr, [](void*, auto*) {});
  XmlVerdict verdict{"no text", 0};
  if (document.empty()) return verdict;
  xmlParserCtxtPtr context = xmlNewParserCtxt();
  xmlFreeDoc(xmlCtxtReadMemory(
      context, document.data(), static_cast<int>(document.size()), nullptr, "UTF-8",
      XML_PARSE_SAX1 | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
  verdict = {};
  if (context->wellFormed == 0) {
    const auto* const error = xmlCtxtGetLastError(context);
    verdict.code = error != nullptr ? error->code : 0;
    verdict.error = error != nullptr && error->message != nullptr ? error->message : "no message";
  }
  xmlFreeParserCtxt(context);
  return verdict;
}
#endif

/// A difference that is known: what we say, what the peer says, and what is special about the
/// document. Without error or codes that side accepts it.
struct KnownXmlDifference {
  std::string ours;
  std::vector<int> codes;
  std::function<bool(const std::string&)> when;
  std::string reason;

  bool explains(const std::string& document, const XmlVerdict& we, const XmlVerdict& peer) const {
    const bool isOurs = ours.empty() ? we.error.empty() : we.error.find(ours) != std::string::npos;
    const bool isPeers = codes.empty() ? peer.error.empty()
                                       : !peer.error.empty() &&
                                             std::count(codes.begin(), codes.end(), peer.code) != 0;
    return isOurs && isPeers && when(document);
  }
};

inline auto holding(const std::string& text) {
  return [text](const std::string& document) { return document.find(text) != std::string::npos; };
}

inline constexpr char kUnread[] =
    "behind a part of the DTD that it has not read, it looks into no values";
inline constexpr char kNotFollowed[] =
    "the text of a parameter entity uses another inside of a declaration, which we do not follow";

#ifdef ZANTREL_HAVE_EXPAT
// Every character beyond ASCII as a letter that all editions of the standard know.
inline std::string withOldLetters(const std::string& document) {
  std::string text;
  for (const char c : document) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) text += c;
    if (byte >= 0xC0) text += "\xC3\xA9";
  }
  return text;
}

inline const std::vector<KnownXmlDifference>& differencesOfExpat() {
  static const std::vector<KnownXmlDifference> differences = {
      {"This is no version of XML.", {}, holding("<?xml"), "it takes any version"},
      {"This is not a reference to", {}, holding("%"), kUnread},
      {"An attribute's value must not hold a bare <.", {}, holding("%"), kUnread},
      {"",
       {XML_ERROR_AMPLIFICATION_LIMIT_BREACH},
       holding("<!ENTITY"),
       "it expands entities, up to a limit"},
      {"",
       {XML_ERROR_INVALID_TOKEN},
       [](const std::string& document) {
         return judgeByExpat(withOldLetters(document)).error.empty();
       },
       "it knows names of the fourth edition only"},
      {"",
       {XML_ERROR_UNDEFINED_ENTITY},
       holding("standalone"),
       "it wants the parameter entities of standalone documents declared"},
      {"",
       {XML_ERROR_INVALID_TOKEN, XML_ERROR_SYNTAX, XML_ERROR_UNCLOSED_TOKEN,
        XML_ERROR_PARAM_ENTITY_REF, XML_ERROR_RECURSIVE_ENTITY_REF},
       holding("&#37;"),
       kNotFollowed},
  };
  return differences;
}
#endif

#ifdef ZANTREL_HAVE_LIBXML2
inline const std::vector<KnownXmlDifference>& differencesOfLibxml2() {
  static const std::vector<KnownXmlDifference> differences = {
      {"This is no version of XML.", {}, holding("1."), "it misses no digit of the version"},
      {"White space is missing here.", {}, holding("<!DOCTYPE"), "it needs none behind DOCTYPE"},
      {"Something else is expected here.",
       {},
       holding("standalone="),
       "it needs no white space before standalone"},
      {"A name is expected here.", {}, holding("NDATA"), "it misses no name behind NDATA"},
      {"The document's element is expected here.",
       {},
       holding(">["),
       "it lets > stand before the internal subset"},
      {"character: U+0000", {}, holding(std::string(1, '\0')), "NUL ends its text"},
      {"Text must not hold the end of a CDATA section.",
       {},
       holding("<!ENTITY"),
       "it lets ]]> stand in the text of entities"},
      {"", {XML_ERR_UNSUPPORTED_ENCODING}, holding("encoding"), "it must know the encoding"},
      {"", {XML_ERR_ENTITY_LOOP}, holding("<!ENTITY"), "it counts what entities would expand to"},
      {"", {XML_ERR_INTERNAL_ERROR}, holding("&#37;"), kNotFollowed},
      {"",
       {XML_ERR_UNDECLARED_ENTITY, XML_WAR_UNDECLARED_ENTITY},
       holding("%"),
       "it wants entities declared that an unread part of the DTD may declare"},
      {"",
       {XML_ERR_URI_FRAGMENT, XML_ERR_UNDECLARED_ENTITY},
       holding("SYSTEM"),
       "it wants system identifiers to be addresses without fragments"},
      {"",
       {XML_NS_ERR_QNAME, XML_NS_ERR_UNDEFINED_NAMESPACE, XML_ERR_ATTRIBUTE_REDEFINED},
       holding(":"),
       "it takes names apart at colons all the same"},
  };
  return differences;
}
#endif

/// Compares verdicts; counts the reasons of known differences and returns the others in words.
class XmlPeers {
 public:
  static constexpr bool kThereAreSome =
#if defined(ZANTREL_HAVE_EXPAT) || defined(ZANTREL_HAVE_LIBXML2)
      true;
#else
      false;
#endif

  std::string compare(const std::string& document) {
    ++compared_;
    std::string unknown;
    const XmlVerdict ours = judgeXml(document);
    accepted_ += ours.error.empty() ? 1 : 0;
#ifdef ZANTREL_HAVE_EXPAT
    unknown += compare("Expat", document, ours, judgeByExpat(document), differencesOfExpat());
#endif
#ifdef ZANTREL_HAVE_LIBXML2
    unknown += compare("libxml2", document, ours, judgeByLibxml2(document), differencesOfLibxml2());
#endif
    return unknown;
  }
  int compared() const {
    return compared_;
  }
  int accepted() const {
    return accepted_;
  }
  /// The known differences that were met, for the test's report.
  void recordReasons() const {
    int number = 0;
    for (const auto& [reason, count] : reasons_)
      testing::Test::RecordProperty("difference" + std::to_string(++number),
                                    reason + ": " + std::to_string(count) + " times");
  }

 private:
  [[maybe_unused]] std::string compare(const std::string& name, const std::string& document,
                                       const XmlVerdict& ours, const XmlVerdict& peer,
                                       const std::vector<KnownXmlDifference>& differences) {
    if (ours.error.empty() == peer.error.empty()) return "";
    for (const KnownXmlDifference& known : differences) {
      if (!known.explains(document, ours, peer)) continue;
      ++reasons_[name + ": " + known.reason];
      return "";
    }
    return name + " (" + std::to_string(peer.code) + ") " + peer.error + "\nwe " + ours.error +
           "\n" + document + "\n";
  }

  int compared_ = 0;
  int accepted_ = 0;
  std::map<std::string, int> reasons_;
};

}  // namespace zantrel::test
