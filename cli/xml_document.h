#pragma once
// The document that the sub-commands of zantrel xml work on, from a file or standard input.

#include <zantrel/xml.h>

#include <string>

#include "session.h"

namespace CLI {
class App;
}

namespace zantrel_cli {

struct DocumentOptions {
  std::string input = "-";
  bool strict = false;     ///< refuse what is not well-formed
  bool keepSpace = false;  ///< white space around text too
};

/// The options that say how a document is read.
void addReading(CLI::App& command, DocumentOptions& options);

/// A session on a document's root.
class XmlDocument {
 public:
  explicit XmlDocument(const Context& context) : session_(context), context_(context) {}

  /// Reads the document, in whatever charset it says. Says why when that fails.
  bool load(const DocumentOptions& options);
  /// Writes all of it in the encoding that it declares; the output may be the file that was read.
  bool save(const std::string& output);

  Session<Zantrel::Xml>& session() { return session_; }
  Zantrel::Xml& xml() { return session_.component(); }

 private:
  Session<Zantrel::Xml> session_;
  const Context& context_;
};

}  // namespace zantrel_cli
