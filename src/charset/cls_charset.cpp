#include "charset/cls_charset.h"

#include "charset/conversion.h"
#include "charset/verification.h"
#include "core/charset/charset_naming.h"
#include "core/charset/code_page.h"
#include "core/charset/html_charset.h"
#include "core/charset/utf8_utf16.h"
#include "core/data_sink.h"
#include "core/data_source.h"
#include "core/encode/content_coding.h"
#include "core/encode/html_entities.h"
#include "core/encode/url_encode.h"
#include "core/log_null.h"
#include "core/transform_file.h"

namespace zantrel {
namespace {

ByteSpan utf8Of(const XString& text) {
  return asBytes(text.getUtf8Sb().view());
}

std::u16string_view utf16Of(const DataBuffer& units) {
  return {reinterpret_cast<const char16_t*>(units.getData2()), units.getSize() / 2};
}

/// Looks up a charset for a property, whose setter writes to the log only when it fails.
int charsetForProperty(const XString& name, const char* tag, LogBase& log) {
  LogNull quiet;
  const int codePage = lookUpCharset(name, tag, quiet);
  return codePage != 0 ? codePage : lookUpCharset(name, tag, log);
}

void asHex(const DataBuffer& bytes, XString& out) {
  StringBuffer text;
  bytes.toHexString(text);
  out.setFromUtf8(text.view());
}

void asQuotedPrintable(const DataBuffer& bytes, XString& out) {
  StringBuffer text;
  ContentCoding().encodeQuotedPrintable(bytes.bytes(), text);
  out.setFromUtf8(text.view());
}

/// Applies one of the codecs that turn text into text.
bool recode(bool (*codec)(std::string_view, StringBuffer&), const XString& in, XString& out) {
  StringBuffer text;
  return codec(in.getUtf8Sb().view(), text) && out.setFromUtf8(text.view());
}

}  // namespace

// Properties

bool ClsCharset::put_AltToCharset(const XString& name) {
  if (charsetForProperty(name, "AltToCharset", log()) == 0) return false;
  settings_.altToCharset = name;
  return true;
}

void ClsCharset::get_DefaultString(XString& out) {
  LogNull quiet;
  const int codePage = lookUpCharset(settings_.toCharset, "ToCharset", quiet);
  out.clear();
  if (codePage == 0) return;
  DataBuffer utf8;
  const ByteSpan bytes = settings_.defaultBytes.bytes();
  EncodingConvert().EncConvert(defaultBytesCodePage(codePage), codepage::kUtf8, bytes.data(),
                               bytes.size(), utf8);
  out.setFromUtf8(utf8.text());
}

bool ClsCharset::put_DefaultString(const XString& text) {
  const int codePage = charsetForProperty(settings_.toCharset, "ToCharset", log());
  if (codePage == 0) return false;
  DataBuffer bytes;
  const ByteSpan utf8 = utf8Of(text);
  if (!EncodingConvert().EncConvert(codepage::kUtf8, defaultBytesCodePage(codePage), utf8.data(),
                                    utf8.size(), bytes)) {
    log().logError("ToCharset lacks a character of the default string.");
    return false;
  }
  settings_.defaultBytes = std::move(bytes);
  return true;
}

void ClsCharset::get_LastInputAsHex(XString& out) {
  asHex(lastInput_, out);
}
void ClsCharset::get_LastInputAsQP(XString& out) {
  asQuotedPrintable(lastInput_, out);
}
void ClsCharset::get_LastOutputAsHex(XString& out) {
  asHex(lastOutput_, out);
}
void ClsCharset::get_LastOutputAsQP(XString& out) {
  asQuotedPrintable(lastOutput_, out);
}

void ClsCharset::keepLast(ByteSpan in, ByteSpan out) {
  lastInput_.clear();
  lastOutput_.clear();
  if (!settings_.saveLast) return;
  lastInput_.append(in);
  lastOutput_.append(out);
}

// Conversions. Each names its charsets and leaves the work to one Conversion.

template <class Convert>
bool ClsCharset::convertData(MethodCall& call, ByteSpan in, DataBuffer& out, Convert convert) {
  Conversion conversion(settings_, call.log(), call.startProgress(0));
  const bool ok = convert(conversion);
  keepLast(in, out.bytes());
  return ok;
}

template <class Convert>
bool ClsCharset::convertFile(MethodCall& call, const XString& inPath, const XString& outPath,
                             Convert convert) {
  Conversion conversion(settings_, call.log(), call.startProgress(0));
  return transformFile(inPath, outPath, call.log(),
                       [&](DataSource& in, DataSink& out) { return convert(conversion, in, out); });
}

bool ClsCharset::ConvertData(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress) {
  return call("ConvertData", progress, [&](MethodCall& c) {
    return convertData(c, in.bytes(), out, [&](Conversion& conversion) {
      return conversion.setSource(settings_.fromCharset) &&
             conversion.setTarget(settings_.toCharset) && conversion.convert(in.bytes(), out);
    });
  });
}

bool ClsCharset::ConvertToUnicode(const DataBuffer& in, XString& out, ProgressEvent* progress) {
  return call("ConvertToUnicode", progress, [&](MethodCall& c) {
    Conversion conversion(settings_, c.log(), c.startProgress(0));
    DataBuffer text;
    bool ok = conversion.setSource(settings_.fromCharset);
    if (ok) {
      // To a page that is not the source's own, to which bytes would be copied unseen.
      const bool wide = conversion.source() == codepage::kUtf8;
      conversion.setTarget(wide ? codepage::kUtf16Le : codepage::kUtf8);
      ok = conversion.convert(in.bytes(), text) &&
           (wide ? out.setFromUnicode2(utf16Of(text)) : out.setFromUtf8(text.text()));
    }
    keepLast(in.bytes(), utf8Of(out));
    return ok;
  });
}

bool ClsCharset::ConvertFromUnicode(const XString& in, DataBuffer& out, ProgressEvent* progress) {
  return call("ConvertFromUnicode", progress, [&](MethodCall& c) {
    return convertData(c, utf8Of(in), out, [&](Conversion& conversion) {
      conversion.setSource(codepage::kUtf8);
      return conversion.setTarget(settings_.toCharset) && conversion.convert(utf8Of(in), out);
    });
  });
}

bool ClsCharset::ConvertHtml(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress) {
  return call("ConvertHtml", progress, [&](MethodCall& c) {
    return convertData(c, in.bytes(), out, [&](Conversion& conversion) {
      return (settings_.fromCharset.isEmpty() || conversion.setSource(settings_.fromCharset)) &&
             conversion.setTarget(settings_.toCharset) && conversion.convertHtml(in.bytes(), out);
    });
  });
}

bool ClsCharset::ConvertFile(const XString& inPath, const XString& outPath,
                             ProgressEvent* progress) {
  return call("ConvertFile", progress, [&](MethodCall& c) {
    return convertFile(
        c, inPath, outPath, [&](Conversion& conversion, DataSource& in, DataSink& out) {
          return conversion.setSource(settings_.fromCharset) &&
                 conversion.setTarget(settings_.toCharset) && conversion.convert(in, out);
        });
  });
}

bool ClsCharset::ConvertHtmlFile(const XString& inPath, const XString& outPath,
                                 ProgressEvent* progress) {
  return call("ConvertHtmlFile", progress, [&](MethodCall& c) {
    return convertFile(
        c, inPath, outPath, [&](Conversion& conversion, DataSource& in, DataSink& out) {
          return (settings_.fromCharset.isEmpty() || conversion.setSource(settings_.fromCharset)) &&
                 conversion.setTarget(settings_.toCharset) && conversion.convertHtml(in, out);
        });
  });
}

// HTML documents

bool ClsCharset::GetHtmlCharsetX(const DataBuffer& html, XString& out) {
  return call("GetHtmlCharset", [&](MethodCall& c) {
    const std::string name = HtmlCharset(html.bytes()).name();
    if (name.empty()) c.log().logInfo("The document declares no charset.");
    return out.setFromUtf8(std::string_view(name));
  });
}

bool ClsCharset::GetHtmlFileCharsetX(const XString& path, XString& out) {
  return call("GetHtmlFileCharset", [&](MethodCall& c) {
    FileDataSource in;
    ByteSpan head;
    if (!in.open(path.getUtf8(), c.log()) || !in.nextBlock(kHtmlHeadBytes, head, c.log())) {
      return false;
    }
    const std::string name = HtmlCharset(head).name();
    if (name.empty()) c.log().logInfo("The document declares no charset.");
    return out.setFromUtf8(std::string_view(name));
  });
}

bool ClsCharset::HtmlEntityDecodeX(const XString& in, XString& out) {
  return call("HtmlEntityDecode", [&](MethodCall&) { return recode(htmlEntityDecode, in, out); });
}

bool ClsCharset::EntityEncodeHexX(const XString& in, XString& out) {
  return call("EntityEncodeHex", [&](MethodCall&) { return recode(entityEncodeHex, in, out); });
}

bool ClsCharset::EntityEncodeDecX(const XString& in, XString& out) {
  return call("EntityEncodeDec", [&](MethodCall&) { return recode(entityEncodeDec, in, out); });
}

bool ClsCharset::UrlDecodeStrX(const XString& in, XString& out) {
  return call("UrlDecodeStr", [&](MethodCall& c) {
    DataBuffer bytes;
    if (!UrlEncode::decode(in.getUtf8Sb().view(), bytes)) return false;
    if (isValidUtf8(bytes.bytes())) return out.setFromUtf8(bytes.text());
    // Old forms post the charset of their page, which UTF-8 cannot be mistaken for.
    c.log().logInfo("The decoded bytes are not UTF-8; they are taken as ANSI text.");
    out.clear();
    return out.appendFromEncoding(bytes.bytes(), "ansi");
  });
}

// Verification

bool ClsCharset::VerifyData(const XString& charset, const DataBuffer& data) {
  return call("VerifyData", [&](MethodCall& c) {
    Verification verification(c.log(), c.startProgress(0));
    return verification.setCharset(charset) && verification.verify(data.bytes());
  });
}

bool ClsCharset::VerifyFile(const XString& charset, const XString& path, ProgressEvent* progress) {
  return call("VerifyFile", progress, [&](MethodCall& c) {
    Verification verification(c.log(), c.startProgress(0));
    FileDataSource in;
    return verification.setCharset(charset) && in.open(path.getUtf8(), c.log()) &&
           verification.verify(in);
  });
}

// Names

int ClsCharset::CharsetToCodePage(const XString& charset) {
  return call("CharsetToCodePage", [&](MethodCall& c) {
    const int codePage = CharsetNaming::charsetToCodePage(charset.getUtf8());
    c.log().logDataStr("Charset", charset);
    if (codePage == 0) c.log().logError("Unknown charset.");
    return codePage;
  });
}

bool ClsCharset::CodePageToCharset(int codePage, XString& out) {
  return call("CodePageToCharset", [&](MethodCall& c) {
    StringBuffer name;
    c.log().logDataLong("CodePage", codePage);
    if (CharsetNaming::codePageToCharset(codePage, name)) return out.setFromUtf8(name.view());
    c.log().logError("Unknown code page.");
    return false;
  });
}

bool ClsCharset::CharsetNamesX(XString& out) {
  return call("CharsetNames", [&](MethodCall&) {
    StringBuffer list;
    for (const CharsetNaming::AcceptedName& row : CharsetNaming::acceptedNames()) {
      const int codePage = CharsetNaming::charsetToCodePage(row.name);
      StringBuffer canonical;
      CharsetNaming::codePageToCharset(codePage, canonical);
      list.append(row.name);
      list.appendChar('\t');
      list.appendInt(codePage);
      list.appendChar('\t');
      list.append(canonical);
      list.appendChar('\n');
    }
    return out.setFromUtf8(list.view());
  });
}

// Files

bool ClsCharset::ReadFile(const XString& path, DataBuffer& out) {
  return call("ReadFile", [&](MethodCall& c) { return out.loadFileUtf8(path.getUtf8(), c.log()); });
}

bool ClsCharset::WriteFile(const XString& path, const DataBuffer& data) {
  return call("WriteFile",
              [&](MethodCall& c) { return data.saveToFileUtf8(path.getUtf8(), c.log()); });
}

}  // namespace zantrel
