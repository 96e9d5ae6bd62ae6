// Finds and rewrites the charset declarations of HTML documents.
//
// Method: the prescan of the HTML standard (section 13.2.3.2, "prescan a byte stream to determine
// its encoding") with section 2.5.4's extraction of a charset from a content attribute, and the
// encoding declaration of XML 1.0, section 4.3.3. Three things go further than the standard:
// the search covers 64 KiB instead of 1 KiB, the content of script, style, title and textarea is
// stepped over as a parser would, and all declarations are collected, since a converted document
// must not contradict itself.
//
// Documents in UTF-16, UTF-32 and EBCDIC are searched through an ASCII view with one byte for each
// character unit, so that places in the view and in the document differ by a factor only.
//
// Limits: one pass, linear; anything after an unclosed comment or raw-text element is not searched;
// what stands behind the first 64 KiB is neither found nor changed.

#include "core/charset/html_charset.h"

#include <algorithm>
#include <array>

#include "core/ascii_text.h"
#include "core/charset/charset_naming.h"
#include "core/charset/code_page.h"
#include "core/charset/encoding_convert.h"
#include "core/data_buffer.h"
#include "core/string_buffer.h"
#include "core/text_search.h"

namespace zantrel {
namespace {

struct WideForm {
  int codePage;
  std::size_t unitBytes;
  std::size_t asciiAt;
};
constexpr std::array<WideForm, 4> kWideForms{{{codepage::kUtf32Le, 4, 0},
                                              {codepage::kUtf32Be, 4, 3},
                                              {codepage::kUtf16Le, 2, 0},
                                              {codepage::kUtf16Be, 2, 1}}};

constexpr char kNotAscii = '\x1A';

constexpr bool isBlank(char c) noexcept {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}
constexpr bool isLetter(char c) noexcept {
  return asciiLower(c) >= 'a' && asciiLower(c) <= 'z';
}

/// First place at or after `from` where a text stands in any case, or npos.
std::size_t findNoCase(std::string_view text, std::string_view wanted, std::size_t from) {
  return TextSearcher(wanted, TextSearcher::Case::IgnoreAscii).find(text, from);
}

bool hasAsciiShape(ByteSpan text, const WideForm& form) {
  if (text.size() < 2 * form.unitBytes) return false;
  for (std::size_t i = 0; i < 2 * form.unitBytes; ++i) {
    const bool low = i % form.unitBytes == form.asciiAt;
    if (low != (text[i] != 0) || text[i] >= 0x80) return false;
  }
  return true;
}

const WideForm* wideFormOf(ByteSpan text, int codePage) {
  for (const WideForm& form : kWideForms) {
    if (form.codePage == codePage || (codePage == 0 && hasAsciiShape(text, form))) return &form;
  }
  return nullptr;
}

/// Hides what ISO-2022 escapes shift to two-byte characters: their bytes look like markup.
void hideShiftedText(std::string& view) {
  bool shifted = false;
  for (std::size_t i = 0; i < view.size(); ++i) {
    if (view[i] == '\x1B' && i + 1 < view.size()) shifted = view[i + 1] == '$';
    if (shifted) view[i] = kNotAscii;
  }
}

}  // namespace

/// One pass over the ASCII view of a document. Places are units of the view.
struct HtmlCharset::Scanner {
  struct Attribute {
    std::string name;  // lower case
    std::size_t valueAt = 0;
    std::string_view value;
  };

  HtmlCharset& result;
  std::string_view text;
  std::size_t at = 0;
  std::size_t insertAt = 0;
  bool placeFound = false;  // of insertAt: the first tag but <html> settles it

  void run() {
    scanXmlDeclaration();
    while ((at = text.find('<', at)) != std::string_view::npos) {
      const std::string_view rest = text.substr(at);
      if (rest.starts_with("<!--")) {
        // "<!-->" is a whole comment: the end may overlap the beginning.
        skipPast("-->", at + 2);
      } else if (rest.size() > 1 &&
                 (isLetter(rest[1]) || (rest[1] == '/' && rest.size() > 2 && isLetter(rest[2])))) {
        scanTag();
      } else if (rest.size() > 1 && (rest[1] == '!' || rest[1] == '/' || rest[1] == '?')) {
        const bool doctype = rest[1] == '!' || rest[1] == '?';
        skipPast(">", at + 1);
        if (doctype && !placeFound) insertAt = std::min(at, text.size());
      } else {
        ++at;
      }
    }
  }

  void skipPast(std::string_view end, std::size_t from) {
    const std::size_t found = text.find(end, from);
    at = found == std::string_view::npos ? text.size() : found + end.size();
  }

  void scanXmlDeclaration() {
    if (!text.starts_with("<?xml") || text.size() < 6 || !isBlank(text[5])) return;
    const std::string_view declaration = text.substr(0, text.find('>'));
    std::size_t i = declaration.find("encoding");
    if (i == std::string_view::npos) return;
    i += 8;
    while (i < declaration.size() && isBlank(declaration[i])) ++i;
    if (i >= declaration.size() || declaration[i] != '=') return;
    ++i;
    while (i < declaration.size() && isBlank(declaration[i])) ++i;
    if (i >= declaration.size() || (declaration[i] != '"' && declaration[i] != '\'')) return;
    const std::size_t end = declaration.find(declaration[i], i + 1);
    if (end != std::string_view::npos) add(i + 1, end - i - 1, true);
  }

  void scanTag() {
    const bool closing = text[at + 1] == '/';
    at += closing ? 2 : 1;
    const std::size_t begin = at;
    while (at < text.size() && !isBlank(text[at]) && text[at] != '>' && text[at] != '/') ++at;
    std::string name(text.substr(begin, at - begin));
    std::transform(name.begin(), name.end(), name.begin(), asciiLower);
    const bool meta = name == "meta" && !closing;
    std::vector<Attribute> attributes;
    Attribute attribute;
    while (nextAttribute(attribute)) {
      if (meta) attributes.push_back(attribute);
    }
    if (closing) return;
    if (meta) scanMeta(attributes);
    if (!placeFound && (name == "html" || name == "head")) insertAt = at;
    placeFound = placeFound || name != "html";
    if (name == "script" || name == "style" || name == "title" || name == "textarea") {
      const std::size_t end = findNoCase(text, "</" + name, at);
      at = end == std::string_view::npos ? text.size() : end;
    }
  }

  /// Reads the next attribute of the tag that `at` is in; false at the tag's end, just behind it.
  bool nextAttribute(Attribute& out) {
    while (at < text.size() && (isBlank(text[at]) || text[at] == '/')) ++at;
    if (at >= text.size()) return false;
    if (text[at] == '>') return ++at, false;
    std::size_t begin = at++;  // a "=" at the start belongs to the name
    while (at < text.size() && !isBlank(text[at]) && text[at] != '/' && text[at] != '>' &&
           text[at] != '=') {
      ++at;
    }
    out.name.assign(text.substr(begin, at - begin));
    std::transform(out.name.begin(), out.name.end(), out.name.begin(), asciiLower);
    out.valueAt = at;
    out.value = {};
    while (at < text.size() && isBlank(text[at])) ++at;
    if (at >= text.size() || text[at] != '=') return true;
    ++at;
    while (at < text.size() && isBlank(text[at])) ++at;
    if (at >= text.size()) return true;
    if (text[at] == '"' || text[at] == '\'') {
      const std::size_t end = text.find(text[at], at + 1);
      if (end == std::string_view::npos) return at = text.size(), false;
      out.valueAt = at + 1;
      out.value = text.substr(at + 1, end - at - 1);
      at = end + 1;
      return true;
    }
    begin = at;
    while (at < text.size() && !isBlank(text[at]) && text[at] != '>') ++at;
    out.valueAt = begin;
    out.value = text.substr(begin, at - begin);
    return true;
  }

  void scanMeta(const std::vector<Attribute>& attributes) {
    const auto find = [&](std::string_view name) -> const Attribute* {
      for (const Attribute& a : attributes) {
        if (a.name == name) return &a;  // a repeated attribute does not count
      }
      return nullptr;
    };
    if (const Attribute* charset = find("charset")) {
      addTrimmed(charset->valueAt, charset->value);
    }
    const Attribute* pragma = find("http-equiv");
    const Attribute* content = find("content");
    if (pragma == nullptr || content == nullptr ||
        !equalsAsciiNoCase(pragma->value, "content-type")) {
      return;
    }
    scanContent(*content);
  }

  /// "text/html; charset=NAME", the name perhaps in quotes.
  void scanContent(const Attribute& content) {
    const std::string_view value = content.value;
    std::size_t i = 0;
    while ((i = findNoCase(value, "charset", i)) != std::string_view::npos) {
      i += 7;
      while (i < value.size() && isBlank(value[i])) ++i;
      if (i >= value.size() || value[i] != '=') continue;
      ++i;
      while (i < value.size() && isBlank(value[i])) ++i;
      if (i >= value.size()) return;
      if (value[i] == '"' || value[i] == '\'') {
        const std::size_t end = value.find(value[i], i + 1);
        if (end != std::string_view::npos) {
          addTrimmed(content.valueAt + i + 1, value.substr(i + 1, end - i - 1));
        }
        return;
      }
      const std::size_t begin = i;
      while (i < value.size() && !isBlank(value[i]) && value[i] != ';') ++i;
      addTrimmed(content.valueAt + begin, value.substr(begin, i - begin));
      return;
    }
  }

  void addTrimmed(std::size_t offset, std::string_view name) {
    while (!name.empty() && isBlank(name.front())) name.remove_prefix(1), ++offset;
    while (!name.empty() && isBlank(name.back())) name.remove_suffix(1);
    add(offset, name.size(), false);
  }

  void add(std::size_t offset, std::size_t length, bool xml) {
    if (length == 0) return;
    const std::size_t base = result.mark_.length;
    result.declarations_.push_back({base + offset * result.unitBytes_, length * result.unitBytes_,
                                    std::string(text.substr(offset, length)), xml});
  }
};

HtmlCharset::HtmlCharset(ByteSpan html, int codePage) : mark_(findByteOrderMark(html)) {
  const std::size_t size = std::min(html.size(), kHtmlHeadBytes);
  const ByteSpan head = html.subspan(mark_.length, size - mark_.length);
  const std::string view = readAsAscii(head, mark_.codePage != 0 ? mark_.codePage : codePage);
  Scanner scanner{*this, view};
  scanner.run();
  insertAt_ = mark_.length + scanner.insertAt * unitBytes_;
  std::sort(declarations_.begin(), declarations_.end(),
            [](const auto& a, const auto& b) { return a.offset < b.offset; });
}

std::string HtmlCharset::readAsAscii(ByteSpan head, int codePage) {
  if (const WideForm* form = wideFormOf(head, codePage)) {
    unitBytes_ = form->unitBytes;
    asciiAt_ = form->asciiAt;
    unitCodePage_ = form->codePage;
    std::string view;
    view.reserve(head.size() / unitBytes_);
    for (std::size_t i = 0; i + unitBytes_ <= head.size(); i += unitBytes_) {
      const ByteSpan unit = head.subspan(i, unitBytes_);
      const bool ascii = unit[asciiAt_] < 0x80 && std::count(unit.begin(), unit.end(), 0) >=
                                                      static_cast<std::ptrdiff_t>(unitBytes_ - 1);
      view += ascii ? static_cast<char>(unit[asciiAt_]) : kNotAscii;
    }
    return view;
  }
  std::string view(asText(head));
  static constexpr std::string_view kProbe = "<meta charset=\"\">";
  DataBuffer probe;
  if (codePage != 0 && codePage != codepage::kUtf8 &&
      EncodingConvert().EncConvert(codepage::kUtf8, codePage, kProbe.data(), kProbe.size(),
                                   probe) &&
      probe.text() != kProbe) {
    // Not a superset of ASCII. Where every byte is one character the view is its translation;
    // elsewhere places in the text say nothing about places in the document, and it stays closed.
    DataBuffer wide;
    (void)EncodingConvert().EncConvert(codePage, codepage::kUtf16Be, head.data(), head.size(),
                                       wide);
    unitCodePage_ = codePage;
    if (wide.getSize() != 2 * head.size()) return {};
    for (std::size_t i = 0; i < view.size(); ++i) {
      const ByteSpan unit = wide.bytes().subspan(2 * i, 2);
      view[i] = unit[0] == 0 && unit[1] < 0x80 ? static_cast<char>(unit[1]) : kNotAscii;
    }
    return view;
  }
  hideShiftedText(view);
  return view;
}

std::string HtmlCharset::name() const {
  StringBuffer canonical;
  if (mark_.codePage != 0 && CharsetNaming::codePageToCharset(mark_.codePage, canonical)) {
    return std::string(canonical.view());
  }
  const auto known = [](const HtmlCharsetDeclaration& d) {
    return CharsetNaming::charsetToCodePage(d.name) != 0;
  };
  for (const bool xml : {false, true}) {
    for (const HtmlCharsetDeclaration& d : declarations_) {
      if (d.xml == xml && known(d)) return d.name;
    }
  }
  if (!declarations_.empty()) return declarations_.front().name;
  return {};
}

int HtmlCharset::codePage() const {
  if (mark_.codePage != 0) return mark_.codePage;
  if (unitBytes_ > 1) return unitCodePage_;
  const int declared = CharsetNaming::charsetToCodePage(name());
  for (const WideForm& form : kWideForms) {
    if (form.codePage == declared) return codepage::kUtf8;
  }
  return declared;
}

bool HtmlCharset::appendAscii(std::string_view text, DataBuffer& out) const {
  if (unitCodePage_ == 0) return out.append(text);
  return EncodingConvert().EncConvert(codepage::kUtf8, unitCodePage_, text.data(), text.size(),
                                      out);
}

std::size_t HtmlCharset::rewrite(ByteSpan html, std::string_view name, DataBuffer& out) const {
  std::size_t done = mark_.length;
  const auto copyTo = [&](std::size_t end) {
    end = std::min(end, html.size());
    if (end > done) out.append(html.subspan(done, end - done));
    done = std::max(done, end);
  };
  for (const HtmlCharsetDeclaration& d : declarations_) {
    copyTo(d.offset);
    appendAscii(name, out);
    done = std::min(d.offset + d.length, html.size());
  }
  if (declarations_.empty()) {
    copyTo(insertAt_);
    appendAscii("<meta charset=\"" + std::string(name) + "\">", out);
  }
  return done;
}

}  // namespace zantrel
