#pragma once

#include <cstdint>

#include "charset/charset_settings.h"
#include "core/data_buffer.h"
#include "core/xstring.h"
#include "frame/component.h"

namespace zantrel {

class Conversion;

/// Conversion of text between charsets: the component behind the public class Charset, which
/// describes its members. Outputs arrive empty. Not for several threads at once.
class ClsCharset final : public Component {
 public:
  CharsetSettings& settings() { return settings_; }

  /// False, with the old value kept and the log telling why, for an unknown name.
  bool put_AltToCharset(const XString& name);
  void get_DefaultString(XString& out);
  bool put_DefaultString(const XString& text);

  void get_LastInputAsHex(XString& out);
  void get_LastInputAsQP(XString& out);
  void get_LastOutputAsHex(XString& out);
  void get_LastOutputAsQP(XString& out);

  bool ConvertData(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress);
  bool ConvertFile(const XString& inPath, const XString& outPath, ProgressEvent* progress);
  bool ConvertToUnicode(const DataBuffer& in, XString& out, ProgressEvent* progress);
  bool ConvertFromUnicode(const XString& in, DataBuffer& out, ProgressEvent* progress);
  bool ConvertHtml(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress);
  bool ConvertHtmlFile(const XString& inPath, const XString& outPath, ProgressEvent* progress);

  bool GetHtmlCharsetX(const DataBuffer& html, XString& out);
  bool GetHtmlFileCharsetX(const XString& path, XString& out);
  bool HtmlEntityDecodeX(const XString& in, XString& out);
  bool EntityEncodeHexX(const XString& in, XString& out);
  bool EntityEncodeDecX(const XString& in, XString& out);
  bool UrlDecodeStrX(const XString& in, XString& out);

  bool VerifyData(const XString& charset, const DataBuffer& data);
  bool VerifyFile(const XString& charset, const XString& path, ProgressEvent* progress);

  int CharsetToCodePage(const XString& charset);
  bool CodePageToCharset(int codePage, XString& out);
  bool CharsetNamesX(XString& out);

  bool ReadFile(const XString& path, DataBuffer& out);
  bool WriteFile(const XString& path, const DataBuffer& data);

 private:
  template <class Convert>
  bool convertData(MethodCall& call, ByteSpan in, DataBuffer& out, Convert convert);
  template <class Convert>
  bool convertFile(MethodCall& call, const XString& inPath, const XString& outPath,
                   Convert convert);
  void keepLast(ByteSpan in, ByteSpan out);

  CharsetSettings settings_;
  DataBuffer lastInput_;
  DataBuffer lastOutput_;
};

}  // namespace zantrel
