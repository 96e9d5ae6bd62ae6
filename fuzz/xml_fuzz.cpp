// XML: content in pieces against the obvious way of decoding it, and documents, which written and
// read again are the same but where the rules themselves change text.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/log_null.h"
#include "core/string_buffer.h"
#include "xml/content_pieces.h"
#include "xml/parse_engine.h"
#include "xml/xml_store.h"
#include "xml/xml_writer.h"

using namespace zantrel;

namespace {

void check(bool holds) {
  if (!holds) std::abort();
}

void decodeSlowly(StringBuffer& text) {
  constexpr std::string_view kReferences[][2] = {
      {"&lt;", "<"}, {"&apos;", "'"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&amp;", "&"}};
  for (const auto& [reference, character] : kReferences)
    text.replaceAllOccurances(reference, character);
}

// Pieces are separated by bytes below 32: an even one begins a text, an odd one a CDATA section.
void checkPieces(std::string text) {
  const XmlStore::Ref store = XmlStore::create();
  ContentPieces pieces(store->newArena());
  StringBuffer slow{std::string_view()};
  for (std::size_t at = 0; at < text.size();) {
    const bool cdata = text[at] % 2 != 0;
    std::size_t end = at + 1;
    while (end < text.size() && static_cast<std::uint8_t>(text[end]) >= 32) ++end;
    char* const piece = text.data() + at + 1;
    const std::size_t size = end - at - 1;
    at = end;
    if (size == 0) continue;
    if (cdata) {
      slow.append(piece, size);
      pieces.addCdata(piece, size);
      continue;
    }
    if (!slow.empty()) slow.appendChar(' ');
    slow.append(piece, size);
    decodeSlowly(slow);
    pieces.addText(piece, size);
  }
  if (pieces.start() == 0) return;
  check(pieces.take(0) == slow.view());
}

std::string write(TreeNode* root) {
  StringBuffer out{std::string_view()};
  writeXml(root, false, out);
  return std::string(out.view());
}

struct Loaded {
  Loaded(std::string_view text, bool trim)
      : tree(ParseEngine(*store, {trim}, log, nullptr).parse(text)) {}
  LogNull log;
  XmlStore::Ref store = XmlStore::create();
  TreeInfo* tree;
};

bool isPlainName(std::string_view name) {
  return !name.empty() && name.find_first_of("<>\"'=/?!") == name.npos;
}

// Whether reading and writing by their rules change something: odd names, references, marks of
// CDATA.
bool changesByRule(const TreeNode* root, std::string_view written) {
  for (const TreeNode* node = root; node != nullptr; node = node->next(root)) {
    if (!isPlainName(node->tag())) return true;
    for (const AttributeSet::Attribute& attribute : node->attributes())
      if (!isPlainName(attribute.nameView())) return true;
  }
  return written.find('&') != written.npos || written.find("]]>") != written.npos ||
         written.find("<?") != written.npos;
}

void checkDocument(std::string_view text) {
  for (const bool trim : {true, false}) {
    const Loaded first(text, trim);
    if (first.tree == nullptr) continue;
    std::size_t count = 0;
    for (const TreeNode* node = first.tree->root; node != nullptr;
         node = node->next(first.tree->root)) {
      check(node->isAlive());
      ++count;
    }
    check(count <= text.size());
    const std::string once = write(first.tree->root);
    const Loaded second(once, true);
    check(second.tree != nullptr);
    const std::string twice = write(second.tree->root);
    if (!trim || changesByRule(first.tree->root, once)) continue;
    const Loaded third(twice, true);
    check(third.tree != nullptr && write(third.tree->root) == twice);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (data[0] % 2 == 0)
    checkPieces(text);
  else
    checkDocument(text);
  return 0;
}
