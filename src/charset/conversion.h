#pragma once
// One conversion as the Charset component's settings ask for it: names looked up, marks read and
// written, input fed in blocks with progress and abort, and a log that says how it went.

#include <cstdint>
#include <optional>

#include "charset/charset_settings.h"
#include "core/charset/encoding_convert.h"
#include "core/data_buffer.h"
#include "core/string_buffer.h"

namespace zantrel {

class DataSink;
class DataSource;
class LogBase;
class ProgressMonitor;

/// Looks up a charset name, "bom:" in front of it left out, and logs it under `tag`. An unknown one
/// is logged as an error and gives 0.
int lookUpCharset(const XString& name, const char* tag, LogBase& log);

class Conversion final {
 public:
  Conversion(const CharsetSettings& settings, LogBase& log, ProgressMonitor& monitor);

  /// The charsets of the conversion. False, with the reason logged, when one is unknown or when the
  /// error action cannot be carried out.
  bool setSource(const XString& name);
  void setSource(int codePage) noexcept { from_ = codePage; }
  bool setTarget(const XString& name);
  void setTarget(int codePage) noexcept { to_ = codePage; }
  int source() const noexcept { return from_; }

  /// Converts all of `in`; appends to `out`.
  bool convert(ByteSpan in, DataBuffer& out);
  /// Converts a file in constant memory. Where the source is a form of Unicode, a byte-order mark
  /// at the file's start says which.
  bool convert(DataSource& in, DataSink& out);

  /// Converts an HTML document and has it declare the target charset. Its own word about its
  /// charset overrides the source, which may be unset.
  bool convertHtml(ByteSpan in, DataBuffer& out);
  bool convertHtml(DataSource& in, DataSink& out);

 private:
  bool begin(DataBuffer& out);
  bool feed(ByteSpan in, DataBuffer& out);
  bool finish(DataBuffer& out);
  std::size_t obeyMark(ByteSpan head);
  bool editHtml(ByteSpan head, DataBuffer& edited, std::size_t& headBytes);
  bool convertFile(ByteSpan edited, DataSource& in, DataSink& out);
  bool fail(const char* error);
  void logLosses();

  const CharsetSettings& settings_;
  LogBase& log_;
  ProgressMonitor& monitor_;
  int from_ = 0;
  int to_ = 0;
  StringBuffer toName_;  ///< as given, without "bom:"
  bool writeMark_ = false;
  ConvertOptions options_;
  std::optional<CharsetStream> stream_;  ///< none while bytes are copied as they are
  bool counted_ = true;  ///< the input's size is known, so percentages mean something
  std::uint64_t bytesIn_ = 0;
  std::uint64_t bytesOut_ = 0;
  // Editing a document's head moves what follows: places behind editedAt_ by editedBy_.
  std::uint64_t editedAt_ = 0;
  std::int64_t editedBy_ = 0;
};

}  // namespace zantrel
