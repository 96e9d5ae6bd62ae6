#pragma once

#include <string_view>

namespace zantrel {

class LogBase;
class ProgressMonitor;
class XmlStore;
struct TreeInfo;

/// Makes a tree of XML text, and of nearly anything else: it accepts unclosed elements, closing
/// tags of any name, attributes without quotes or values, text around the document. It reads no DTD
/// and knows no references but the five of XML itself, so that no document grows by being read.
/// Time and memory are linear in the text.
class ParseEngine final {
 public:
  struct Options {
    /// White space around every piece of text is dropped.
    bool trim = true;
  };

  /// The tree's nodes come to the store. The monitor may be null.
  ParseEngine(XmlStore& store, const Options& options, LogBase& log, ProgressMonitor* progress)
      : store_(store), options_(options), log_(log), progress_(progress) {}

  /// The tree of a text in UTF-8, of at most 2^31-1 bytes; null when it has no element or the
  /// monitor asked to stop. Of several elements side by side the last complete one is the document.
  /// Errors are logged with line and column, and do not end the work unless nothing can follow
  /// them. Throws std::bad_alloc; what it has made by then goes with the store.
  TreeInfo* parse(std::string_view text);

 private:
  XmlStore& store_;
  Options options_;
  LogBase& log_;
  ProgressMonitor* progress_;
};

}  // namespace zantrel
