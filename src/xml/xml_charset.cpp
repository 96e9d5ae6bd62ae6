#include "xml/xml_charset.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>

#include "core/ascii_text.h"
#include "core/charset/byte_order_mark.h"
#include "core/charset/charset_naming.h"
#include "core/charset/code_page.h"
#include "core/charset/encoding_convert.h"
#include "core/charset/utf8_utf16.h"
#include "core/data_buffer.h"
#include "core/log_base.h"
#include "core/xstring.h"
#include "xml/tree_info.h"
#include "xml/tree_node.h"

namespace zantrel {

namespace {

bool isUnicode(int codePage) {
  return !byteOrderMarkOf(codePage).empty();
}

/// The code page of a name; 0 for one that cannot be converted.
int knownPage(std::string_view name) {
  const int codePage = CharsetNaming::charsetToCodePage(name);
  return findCodePage(codePage) != nullptr ? codePage : codepage::kUnknown;
}

/// UTF-16 or UTF-32 without a mark: a document begins with a character of ASCII.
int pageByZeroBytes(ByteSpan bytes) {
  struct Form {
    int codePage;
    std::array<bool, 4> zero;
    std::size_t size;
  };
  static constexpr Form kForms[] = {{codepage::kUtf32Le, {false, true, true, true}, 4},
                                    {codepage::kUtf32Be, {true, true, true, false}, 4},
                                    {codepage::kUtf16Le, {false, true}, 2},
                                    {codepage::kUtf16Be, {true, false}, 2}};
  for (const Form& form : kForms) {
    if (bytes.size() < form.size) continue;
    const bool same = std::equal(form.zero.begin(), form.zero.begin() + form.size, bytes.begin(),
                                 [](bool zero, std::uint8_t byte) { return zero == (byte == 0); });
    if (same) return form.codePage;
  }
  return codepage::kUnknown;
}

/// The encoding that a declaration at the start of the bytes names; empty without one.
std::string_view declaredEncoding(std::string_view text) {
  constexpr std::string_view kStart = "<?xml";
  constexpr std::string_view kName = "encoding";
  text.remove_prefix(std::min(text.find_first_not_of(kTrimmedBlanks), text.size()));
  if (!text.starts_with(kStart)) return {};
  text = text.substr(0, text.find('>'));
  const std::size_t name = text.find(kName);
  if (name == text.npos) return {};
  const std::size_t open = text.find_first_of("\"'", name + kName.size());
  const std::size_t close = open != text.npos ? text.find(text[open], open + 1) : text.npos;
  return close != text.npos ? trimmed(text.substr(open + 1, close - open - 1)) : std::string_view();
}

int pageOfDeclaration(std::string_view text, LogBase& log) {
  const std::string_view name = declaredEncoding(text);
  if (name.empty()) return codepage::kUtf8;
  const int codePage = knownPage(name);
  if (codePage == codepage::kUnknown) {
    log.logInfo("The declaration names an unknown encoding: taken for utf-8.");
    log.logDataStr("encoding", XString(name));
  }
  return codePage == codepage::kUnknown || isUnicode(codePage) ? codepage::kUtf8 : codePage;
}

bool cannotConvert(int codePage, std::uint64_t offset, LogBase& log) {
  log.logError("Failed to convert XML data to utf-8 internal representation");
  log.logDataLong("codePage", codePage);
  log.logData64("byteOffset", static_cast<std::int64_t>(offset));
  return false;
}

/// Whether a charset has all that cannot be written as references.
class NamesCheck {
 public:
  explicit NamesCheck(int codePage)
      : stream_(codepage::kUtf8, codePage, {.action = ErrorAction::Fail}) {}

  bool prolog(const TreeInfo& tree) {
    return (tree.declaration == nullptr || element(*tree.declaration)) &&
           text(tree.docType.view()) && text(tree.styleSheet.view());
  }
  bool element(const TreeNode& node) {
    const AttributeSet& attributes = node.attributes();
    return text(node.tag()) && (!node.isCdata() || text(node.content())) &&
           std::all_of(attributes.begin(), attributes.end(),
                       [this](const AttributeSet::Attribute& one) { return text(one.nameView()); });
  }

 private:
  bool text(std::string_view text) {
    if (std::all_of(text.begin(), text.end(), [](char c) { return c > 0; })) return true;
    stream_.reset();
    out_.clear();
    return stream_.convertAll(asBytes(text), out_);
  }

  CharsetStream stream_;
  DataBuffer out_;
};

bool namesCanBeWritten(const TreeNode* top, int codePage) {
  NamesCheck check(codePage);
  if (top->isRoot() && !check.prolog(*top->tree())) return false;
  for (const TreeNode* node = top; node != nullptr; node = node->next(top))
    if (!check.element(*node)) return false;
  return true;
}

}  // namespace

bool xmlTextOf(ByteSpan bytes, DataBuffer& storage, std::string_view& text, LogBase& log) {
  const ByteOrderMark mark = findByteOrderMark(bytes);
  int codePage = mark.codePage;
  if (codePage == codepage::kUnknown) codePage = pageByZeroBytes(bytes);
  if (codePage == codepage::kUnknown) codePage = pageOfDeclaration(asText(bytes), log);
  const ByteSpan content = bytes.subspan(mark.length);
  if (codePage == codepage::kUtf8) {
    text = asText(content);
    const std::size_t valid = validUtf8Size(content);
    return valid == content.size() || cannotConvert(codePage, mark.length + valid, log);
  }
  CharsetStream stream(codePage, codepage::kUtf8);
  if (!stream.convertAll(content, storage)) throw std::bad_alloc();
  text = storage.text();
  return stream.invalidCount() == 0 ||
         cannotConvert(codePage, mark.length + stream.firstErrorOffset(), log);
}

bool xmlBytesOf(const TreeNode* top, std::string_view text, std::string_view encoding,
                DataBuffer& out, LogBase& log) {
  const int codePage = encoding.empty() ? codepage::kUtf8 : knownPage(encoding);
  const auto fails = [&](const char* error) {
    log.logError(error);
    log.logDataStr("encoding", XString(encoding));
    return false;
  };
  if (codePage == codepage::kUnknown) return fails("Unknown charset.");
  CharsetStream stream(codepage::kUtf8, codePage, {.action = ErrorAction::HexEntity});
  if (codePage != codepage::kUtf8 && !out.append(byteOrderMarkOf(codePage))) throw std::bad_alloc();
  if (!stream.convertAll(asBytes(text), out)) throw std::bad_alloc();
  if (stream.invalidCount() != 0) return fails("The text of the tree is not valid UTF-8.");
  if (stream.unmappableCount() == 0 || namesCanBeWritten(top, codePage)) return true;
  return fails("The encoding lacks a character of the document, where no reference can stand.");
}

}  // namespace zantrel
