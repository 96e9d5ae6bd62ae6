// The parser walks over a copy of the text, which becomes the text of the tree: names, values and
// content are slices of it, decoded in place. Children and attributes are gathered on stacks and
// stored as lists of exact size when an element is complete. The functions take where they are and
// return where they got to, so that the compiler keeps it in a register.
//
// A processor guesses how a loop over bytes ends. Names come again and again, so that it learns
// their lengths, and loops are fastest. Lengths of texts and values it cannot guess: blocks of
// bytes are searched for their ends.

#include "xml/parse_engine.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "core/ascii_text.h"
#include "core/byte_block.h"
#include "core/log_base.h"
#include "core/string_buffer.h"
#include "core/xstring.h"
#include "frame/progress_monitor.h"
#include "xml/content_pieces.h"
#include "xml/small_stack.h"
#include "xml/xml_decode.h"
#include "xml/xml_store.h"

namespace zantrel {

namespace {

// Classes of characters.
enum : std::uint8_t { kSpace = 1, kEndsTag = 2, kEndsName = 4, kQuote = 8, kEndsClosing = 16 };

constexpr std::array<std::uint8_t, 256> kClasses = [] {
  std::array<std::uint8_t, 256> classes{};
  for (const char c : {' ', '\t', '\r', '\n'})
    classes[static_cast<std::uint8_t>(c)] = kSpace | kEndsTag | kEndsName;
  classes['/'] = classes['>'] = kEndsTag | kEndsName;
  classes['>'] |= kEndsClosing;
  classes['<'] |= kEndsClosing;
  classes['='] = kEndsName;
  classes['"'] = classes['\''] = kQuote;
  return classes;
}();

std::uint8_t classOf(char c) {
  return kClasses[static_cast<std::uint8_t>(c)];
}
bool is(char c, unsigned which) {
  return (classOf(c) & which) != 0;
}

// What stands behind the text, so that every search ends, at the end of the text or here.
constexpr std::string_view kSentinel = ">\"'<";

template <class InSet>
inline char* findIn(char* at, InSet inSet) {
  for (;;) {
    const std::size_t first = inSet(ByteBlock::load(at)).first();
    at += first;
    if (first != ByteBlock::kSize) return at;
  }
}

template <unsigned kWhich>
inline char* findClass(char* at) {
  while (!is(*at, kWhich)) ++at;
  return at;
}

inline char* skipSpace(char* at) {
  // One blank is usual between attributes, an indentation between elements.
  if (!is(*at, kSpace)) return at;
  if (!is(*++at, kSpace)) return at;
  return findIn(at + 1, [](ByteBlock block) {
    return ~(block.equal(' ') | block.equal('\n') | block.equal('\t') | block.equal('\r'));
  });
}

// The first character of the set, and whether an ampersand stands before it.
template <class InSet>
inline char* findWithReferences(char* at, bool& references, InSet inSet) {
  references = false;
  for (;;) {
    const ByteBlock block = ByteBlock::load(at);
    const auto set = inSet(block);
    const auto ampersands = block.equal('&');
    if ((set | ampersands).any()) {
      const std::size_t first = set.first();
      references |= ampersands.first() < first;
      if (first != ByteBlock::kSize) return at + first;
    }
    at += ByteBlock::kSize;
  }
}

constexpr std::uint32_t kMostErrors = 100;

class Parser final {
 public:
  Parser(XmlStore& store, bool trim, LogBase& log, ProgressMonitor* progress)
      : store_(store),
        arena_(store.newArena()),
        trim_(trim),
        log_(log),
        progress_(progress),
        pieces_(arena_) {}

  TreeInfo* parse(std::string_view text);

 private:
  struct Open {  // an element that has begun
    TreeNode* node;
    // Most content is one text, which needs no list.
    char* onlyText;
    std::uint32_t onlySize;
    bool references;  // of that text
    // Of counts that the size of a text bounds.
    std::uint32_t firstPiece;
    std::uint32_t firstChild;
  };

  char* readText(char* at);
  void addText(Open& element, char* text, std::size_t size, bool references);
  void listOnlyText(Open& element);
  char* readMarkup(char* at);
  char* readComment(char* at);
  char* readCdata(char* at);
  char* readDocType(char* at);
  char* readInstruction(char* at);
  char* readStyleSheet(char* at);
  char* findClosingEnd(char* at) const;
  char* readClosingTag(char* at);
  char* readElement(char* at);
  char* readAttributes(char* at, TreeNode* node, bool& isEmpty);
  char* readAttribute(char* at);
  char* readValue(char* at, AttributeSet::Attribute& attribute);
  void keepAttributes(TreeNode* node);
  void closeElement();
  void keepContent(const Open& closed);
  void keepChildren(TreeNode* node, std::size_t first);
  void complete(TreeNode* node);
  void finish();
  void dropDocument();

  TreeNode* newNode(const char* tag, const char* tagEnd) {
    TreeNode* const node = arena_.newNode();
    node->borrowTag(tag, static_cast<std::size_t>(tagEnd - tag));
    return node;
  }
  // Where a search really ended that may have gone on into the sentinel.
  char* upToEnd(char* at) const { return std::min(at, end_); }
  std::size_t left(const char* at) const { return static_cast<std::size_t>(end_ - at); }
  std::string_view rest(const char* at) const { return {at, left(at)}; }
  char* find(char* at, char c) const {
    auto* const found = static_cast<char*>(std::memchr(at, c, left(at)));
    return found != nullptr ? found : end_;
  }
  bool startsWith(const char* at, std::string_view word) const {
    return left(at) >= word.size() && std::equal(word.begin(), word.end(), at, [](char a, char b) {
             return asciiLower(a) == asciiLower(b);
           });
  }
  bool startsWithWord(const char* at, std::string_view word) const {
    return startsWith(at, word) && left(at) > word.size() && is(at[word.size()], kSpace);
  }
  void logErrorAt(const char* error, const char* place);

  XmlStore& store_;
  XmlArena& arena_;
  bool trim_;
  LogBase& log_;
  ProgressMonitor* progress_;

  char* text_ = nullptr;  // the document's
  char* end_ = nullptr;
  bool stopped_ = false;
  bool aborted_ = false;

  SmallStack<Open, 32> open_;
  SmallStack<TreeNode*, 64> children_;  // complete children of open elements, the innermost's last
  SmallStack<AttributeSet::Attribute, 16> attributes_;
  ContentPieces pieces_;

  // What the next complete top-level element gets.
  TreeNode* declaration_ = nullptr;
  std::vector<TreeNode*> instructions_;
  StringBuffer docType_ = StringBuffer::withCapacity(0);
  StringBuffer styleSheet_ = StringBuffer::withCapacity(0);
  TreeInfo* document_ = nullptr;

  std::uint32_t errors_ = 0;
  const char* lineStart_ = nullptr;
  const char* counted_ = nullptr;
  std::uint32_t line_ = 1;
};

TreeInfo* Parser::parse(std::string_view text) {
  if (text.size() > 0x7FFFFFFF) throw std::bad_alloc();
  text_ = static_cast<char*>(arena_.allocate(text.size() + kSentinel.size()));
  if (!text.empty()) std::memcpy(text_, text.data(), text.size());
  end_ = text_ + text.size();
  std::memcpy(end_, kSentinel.data(), kSentinel.size());
  lineStart_ = counted_ = text_;
  if (progress_ != nullptr) progress_->reset(static_cast<std::int64_t>(text.size()));
  for (char* at = text_; at != end_ && !stopped_;) at = *at == '<' ? readMarkup(at) : readText(at);
  finish();
  if (progress_ != nullptr && !aborted_) progress_->end();
  return document_;
}

inline char* Parser::readText(char* at) {
  if (trim_) {
    at = skipSpace(at);
    if (*at == '<') return at;
  }
  bool references = false;
  char* const next =
      upToEnd(findWithReferences(at, references, [](ByteBlock block) { return block.equal('<'); }));
  char* last = next;
  if (trim_)
    while (last != at && is(last[-1], kSpace)) --last;
  if (last != at && !open_.empty())
    addText(open_.back(), at, static_cast<std::size_t>(last - at), references);
  return next;
}

inline void Parser::addText(Open& element, char* text, std::size_t size, bool references) {
  if (pieces_.start() == element.firstPiece && element.onlyText == nullptr) {
    element.onlyText = text;
    element.onlySize = static_cast<std::uint32_t>(size);
    element.references = references;
    return;
  }
  listOnlyText(element);
  pieces_.addText(text, size);
}

void Parser::listOnlyText(Open& element) {
  if (element.onlyText != nullptr)
    pieces_.addText(std::exchange(element.onlyText, nullptr), element.onlySize);
}

inline char* Parser::readMarkup(char* at) {
  const char kind = at[1];
  if (kind == '/') return readClosingTag(at);
  if (kind == '?') return readInstruction(at);
  if (kind != '!') return readElement(at);
  if (startsWith(at, "<!--")) return readComment(at);
  if (startsWith(at, "<![CDATA[")) return readCdata(at);
  if (startsWith(at, "<!DOCTYPE")) return readDocType(at);
  char* const end = find(at, '>');
  return end != end_ ? end + 1 : end;
}

char* Parser::readComment(char* at) {
  constexpr std::size_t kStart = 4;
  constexpr std::string_view kEnd = "-->";
  const std::size_t size = rest(at + kStart).find(kEnd);
  if (size != std::string_view::npos) return at + kStart + size + kEnd.size();
  logErrorAt("Unclosed comment", at);
  stopped_ = true;
  return end_;
}

char* Parser::readCdata(char* at) {
  constexpr std::size_t kStart = 9;
  constexpr std::string_view kEnd = "]]>";
  char* const begin = at + kStart;
  const std::size_t size = rest(begin).find(kEnd);
  const bool closed = size != std::string_view::npos;
  if (!closed) logErrorAt("Unclosed CDATA section", at);
  if (!open_.empty()) {
    listOnlyText(open_.back());
    pieces_.addCdata(begin, closed ? size : left(begin));
    open_.back().node->setCdata(true);
  }
  return closed ? begin + size + kEnd.size() : end_;
}

char* Parser::readDocType(char* at) {
  char* const begin = at;
  for (std::size_t depth = 0; at != end_;) {
    const char c = *at++;
    if (c == '<') ++depth;
    if (c != '>' || --depth != 0) continue;
    docType_.append(begin, static_cast<std::size_t>(at - begin));
    docType_.appendChar('\n');
    return at;
  }
  logErrorAt("Failed to parse DTD", begin);
  return at;
}

char* Parser::readInstruction(char* at) {
  if (startsWithWord(at, "<?xml-stylesheet")) return readStyleSheet(at);
  char* const target = at + 2;
  const bool isDeclaration = startsWithWord(target, "xml");
  at = findClass<kEndsTag>(target);
  const bool endsHere = at != target && at[-1] == '?';
  TreeNode* const node = newNode(target, endsHere ? at - 1 : at);
  if (!isDeclaration) {
    instructions_.push_back(node);
  } else {
    if (declaration_ != nullptr) store_.end(declaration_);
    declaration_ = node;
  }
  bool isEmpty = false;
  return readAttributes(at, node, isEmpty);
}

char* Parser::readStyleSheet(char* at) {
  constexpr std::string_view kEnd = "?>";
  const std::size_t end = rest(at).find(kEnd);
  const std::size_t size = end != std::string_view::npos ? end + kEnd.size() : left(at);
  styleSheet_.append(at, size);
  styleSheet_.appendChar('\n');
  return at + size;
}

// As a rule where the name of the open element ends: a guess, so that what follows need not wait
// for the search.
inline char* Parser::findClosingEnd(char* at) const {
  if (open_.empty()) return findClass<kEndsClosing>(at);
  const std::size_t size = open_.back().node->tag().size();
  const ByteBlock block = ByteBlock::load(at);
  const std::size_t first = (block.equal('>') | block.equal('<')).first();
  if (first == size && size < ByteBlock::kSize) return at + size;
  return findClass<kEndsClosing>(at);
}

inline char* Parser::readClosingTag(char* at) {
  const char* const tag = at;
  at = findClosingEnd(at + 2);
  if (*at == '<' || at == end_) {
    logErrorAt("Error in closing tag", tag);
    if (!open_.empty() && errors_ <= kMostErrors)
      log_.logDataStr("error_tag", XString(open_.back().node->tag()));
  } else {
    ++at;
  }
  if (progress_ != nullptr) {
    progress_->setPercent(at - text_, aborted_);
    stopped_ = aborted_;
  }
  // Whatever its name is: deliberate.
  if (!open_.empty()) closeElement();
  return at;
}

inline char* Parser::readElement(char* at) {
  char* const tag = ++at;
  at = findClass<kEndsTag>(tag);
  TreeNode* const node = newNode(tag, at);
  open_.push({node, nullptr, 0, false, static_cast<std::uint32_t>(pieces_.start()),
              static_cast<std::uint32_t>(children_.size())});
  bool isEmpty = false;
  if (*at == '>' && at != end_)
    ++at;
  else
    at = readAttributes(at, node, isEmpty);
  if (isEmpty) closeElement();
  return at;
}

// Up to the end of the tag, which may say that the element is empty.
char* Parser::readAttributes(char* at, TreeNode* node, bool& isEmpty) {
  attributes_.shrink(0);
  for (;;) {
    at = skipSpace(at);
    if (*at == '>' || at == end_) break;
    isEmpty = *at == '/';
    at = isEmpty ? at + 1 : readAttribute(at);
  }
  if (!attributes_.empty()) keepAttributes(node);
  return at != end_ ? at + 1 : at;
}

inline char* Parser::readAttribute(char* at) {
  AttributeSet::Attribute attribute{};
  char* const name = at;
  at = findClass<kEndsName | kQuote>(name);
  char* nameEnd = at;
  if (is(*at, kQuote)) {
    while (!is(*at, kEndsName)) ++at;
    nameEnd = std::remove_if(name, at, [](char c) { return is(c, kQuote); });
  }
  at = skipSpace(at);
  if (*at == '=')
    at = readValue(skipSpace(at + 1), attribute);
  else if (nameEnd != name && nameEnd[-1] == '?')
    --nameEnd;  // it belongs to the end of a declaration
  if (nameEnd == name) return at;
  attribute.name = name;
  attribute.nameSize = static_cast<std::uint32_t>(nameEnd - name);
  attributes_.push(attribute);
  return at;
}

// Up to a quote, which without one at the beginning is the next of either kind: deliberate, as tags
// lose their ends by it.
inline char* Parser::readValue(char* at, AttributeSet::Attribute& attribute) {
  if (at == end_) return at;
  char* begin = at;
  char* last = at;
  bool references = false;
  if (is(*begin, kQuote)) {
    const char quote = *begin++;
    last = findWithReferences(begin, references,
                              [quote](ByteBlock block) { return block.equal(quote); });
  } else {
    last = findWithReferences(begin, references,
                              [](ByteBlock block) { return block.equal('"') | block.equal('\''); });
  }
  last = upToEnd(last);
  std::size_t size = static_cast<std::size_t>(last - begin);
  if (references) size = decodeReferences(begin, size, 1);
  attribute.value = begin;
  attribute.valueSize = static_cast<std::uint32_t>(size);
  return last != end_ ? last + 1 : last;
}

inline void Parser::keepAttributes(TreeNode* node) {
  void* const memory = arena_.allocate(AttributeSet::listBytes(attributes_.size()));
  node->borrowAttributes(memory, attributes_.data(), attributes_.size());
}

inline void Parser::closeElement() {
  const Open& closed = open_.back();  // stays as it is until the next element
  open_.pop();
  TreeNode* const node = closed.node;
  if (closed.onlyText != nullptr && !closed.references)
    node->borrowContent(closed.onlyText, closed.onlySize);
  else if (closed.onlyText != nullptr || pieces_.start() != closed.firstPiece)
    keepContent(closed);
  // The element stands in the place of its children, or behind its siblings.
  const std::size_t first = closed.firstChild;
  if (children_.size() == first) {
    children_.push(node);
  } else {
    keepChildren(node, first);
    children_.shrink(first + 1);
    children_.back() = node;
  }
  if (open_.empty()) return complete(node);
  const Open& parent = open_.back();
  node->placeUnder(parent.node, first - parent.firstChild);
}

void Parser::keepContent(const Open& closed) {
  std::string_view content;
  if (closed.onlyText != nullptr)
    content = {closed.onlyText, decodeReferences(closed.onlyText, closed.onlySize, 1)};
  else
    content = pieces_.take(closed.firstPiece);
  closed.node->borrowContent(content.data(), content.size());
}

inline void Parser::keepChildren(TreeNode* node, std::size_t first) {
  const std::size_t count = children_.size() - first;
  if (count == 1) return node->borrowOnlyChild(children_.back());
  auto** const list = static_cast<TreeNode**>(arena_.allocate(count * sizeof(TreeNode*)));
  std::copy_n(children_.data() + first, count, list);
  node->borrowChildren(list, count);
}

// A top-level element has ended: it is the document, until another one is.
void Parser::complete(TreeNode* node) {
  children_.shrink(0);
  dropDocument();
  document_ = store_.newTreeWithoutHandles(node);
  document_->declaration = std::exchange(declaration_, nullptr);
  document_->processingInstructions.swap(instructions_);
  if (!docType_.empty()) std::swap(document_->docType, docType_);
  if (!styleSheet_.empty()) std::swap(document_->styleSheet, styleSheet_);
  if (document_->declaration == nullptr) return;
  const AttributeSet& attributes = document_->declaration->attributes();
  const std::ptrdiff_t standalone = attributes.find("standalone");
  document_->standalone =
      standalone >= 0 && attributes[static_cast<std::size_t>(standalone)].valueView() == "yes";
}

void Parser::dropDocument() {
  if (document_ != nullptr) store_.end(std::exchange(document_, nullptr));
}

// Elements still open are the document, down from the outermost, where there is none else.
void Parser::finish() {
  TreeInfo* const before = std::exchange(document_, nullptr);
  while (!open_.empty()) closeElement();
  if (before != nullptr) {
    dropDocument();
    document_ = before;
  }
  if (aborted_) dropDocument();
  if (declaration_ != nullptr) store_.end(declaration_);
  for (TreeNode* instruction : instructions_) store_.end(instruction);
}

// Lines are counted from the last error on, so that many errors cost no more than one.
void Parser::logErrorAt(const char* error, const char* place) {
  if (++errors_ > kMostErrors) {
    if (errors_ == kMostErrors + 1) log_.logInfo("Further errors in the XML are not listed.");
    return;
  }
  for (; counted_ != place; ++counted_) {
    if (*counted_ != '\n') continue;
    ++line_;
    lineStart_ = counted_ + 1;
  }
  log_.logError(error);
  log_.logDataLong("line", static_cast<std::int32_t>(line_));
  log_.logDataLong("column", static_cast<std::int32_t>(place - lineStart_ + 1));
}

}  // namespace

TreeInfo* ParseEngine::parse(std::string_view text) {
  return Parser(store_, options_.trim, log_, progress_).parse(text);
}

}  // namespace zantrel
