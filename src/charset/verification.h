#pragma once

#include <cstdint>

#include "core/bytes.h"
#include "core/charset/encoding_convert.h"

namespace zantrel {

class DataSource;
class LogBase;
class ProgressMonitor;
class XString;

/// Whether bytes mean something in a charset, from their first to their last. The log tells where
/// the first invalid one stands.
class Verification final {
 public:
  Verification(LogBase& log, ProgressMonitor& monitor) : log_(log), monitor_(monitor) {}

  /// False, with the log telling why, for an unknown name.
  bool setCharset(const XString& name);
  bool verify(ByteSpan bytes);
  /// A file in blocks. Where the charset is UTF-16 or UTF-32, a mark of the other byte order at the
  /// file's start is obeyed.
  bool verify(DataSource& in);

 private:
  bool check(CharsetStream& stream, ByteSpan piece, bool last);

  LogBase& log_;
  ProgressMonitor& monitor_;
  int codePage_ = 0;
};

}  // namespace zantrel
