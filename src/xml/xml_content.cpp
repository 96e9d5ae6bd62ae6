#include "xml/xml_content.h"

#include <algorithm>
#include <bit>
#include <new>
#include <vector>

#include "compress/adler32.h"
#include "compress/zantrel_deflate.h"
#include "core/byte_order.h"
#include "core/charset/utf8_utf16.h"
#include "core/data_buffer.h"
#include "core/encode/base64.h"
#include "core/encode/html_entities.h"
#include "core/log_base.h"
#include "core/secret.h"
#include "core/string_buffer.h"
#include "crypto/password_seal.h"
#include "xml/parse_engine.h"
#include "xml/tree_node.h"
#include "xml/xml_exact_writer.h"
#include "xml/xml_store.h"

namespace zantrel {
namespace {

bool fail(const char* reason, LogBase& log) {
  log.logError(reason);
  return false;
}

void need(bool stored) {
  if (!stored) throw std::bad_alloc();
}

StringBuffer emptyText() {
  return StringBuffer(std::string_view());
}

bool zip(ByteSpan bytes, DataBuffer& out, LogBase& log) {
  return ZantrelDeflate().zlibCompress(bytes, out, log);
}

// The checksum is looked at here since the engine does not.
bool unzip(ByteSpan zipped, DataBuffer& out, LogBase& log) {
  constexpr std::uint64_t kAlwaysAllowed = std::uint64_t{256} << 20;
  constexpr std::uint64_t kAllowedRatio = 100;
  constexpr char kDamaged[] = "The content is no compressed data, or it is damaged.";
  constexpr std::size_t kChecksumBytes = 4;
  const std::uint32_t before = out.getSize();
  ZantrelDeflate engine;
  engine.setMaxDecompressedSize(std::max(kAlwaysAllowed, kAllowedRatio * zipped.size()));
  const auto checksum = [&] {
    return loadWord<std::uint32_t, std::endian::big>(zipped.last(kChecksumBytes).data());
  };
  const bool done = engine.zlibDecompress(zipped, out, log) && engine.reachedEnd() &&
                    engine.unusedInput() == kChecksumBytes &&
                    Adler32::getAdler(out.bytes().subspan(before)) == checksum();
  if (done) return true;
  out.truncate(before);
  return fail(kDamaged, log);
}

bool wrap(ByteSpan bytes, const BinaryContent& how, StringBuffer& out, LogBase& log) {
  SecretBuffer zipped;
  if (how.zip) {
    // In one piece: a buffer that grows leaves parts of a secret behind.
    if (how.encrypt) need(zipped.buffer().reserve(bytes.size() + bytes.size() / 1000 + 64));
    if (!zip(bytes, zipped.buffer(), log)) return false;
    bytes = zipped.bytes();
  }
  DataBuffer sealed;
  if (how.encrypt) {
    if (!sealWithPassword(bytes, asBytes(how.password), sealed, log)) return false;
    bytes = sealed.bytes();
  }
  need(base64Encode(bytes, out));
  return true;
}

bool unwrap(std::string_view content, const BinaryContent& how, DataBuffer& out, LogBase& log) {
  if (!how.encrypt && !how.zip) {
    need(base64Decode(content, out));
    return true;
  }
  DataBuffer coded;
  need(base64Decode(content, coded));
  const ByteSpan password = asBytes(how.password);
  if (!how.zip) return openWithPassword(coded.bytes(), password, out, log);
  if (!how.encrypt) return unzip(coded.bytes(), out, log);
  SecretBuffer zipped;
  return openWithPassword(coded.bytes(), password, zipped.buffer(), log) &&
         unzip(zipped.bytes(), out, log);
}

// Children without handles, from a tree of the same store.
void moveChildren(TreeNode& from, TreeNode& to) {
  std::vector<TreeNode*> moved(from.numChildren());
  for (std::size_t i = moved.size(); i > 0; --i) moved[i - 1] = from.takeChild(i - 1);
  for (TreeNode* child : moved) to.appendChild(child);
}

}  // namespace

bool encodeContent(TreeNode& node, std::string_view charset, WordCoding coding, LogBase& log) {
  StringBuffer words = emptyText();
  if (!encodeWords(node.content(), charset, coding, words, log)) return false;
  node.setContent(words.view());
  return true;
}

bool decodeContent(TreeNode& node, LogBase& log) {
  StringBuffer text = emptyText();
  need(decodeWords(node.content(), text, log));
  node.setContent(text.view());
  return true;
}

void decodeContentEntities(TreeNode& node) {
  StringBuffer text = emptyText();
  need(htmlEntityDecode(node.content(), text));
  node.setContent(text.view());
}

bool setBinaryContent(TreeNode& node, ByteSpan bytes, const BinaryContent& how, LogBase& log) {
  StringBuffer text = emptyText();
  if (!wrap(bytes, how, text, log)) return false;
  node.setContent(text.view());
  return true;
}

bool getBinaryContent(const TreeNode& node, const BinaryContent& how, DataBuffer& out,
                      LogBase& log) {
  return unwrap(node.content(), how, out, log);
}

bool wrapContent(TreeNode& node, const BinaryContent& how, LogBase& log) {
  return setBinaryContent(node, asBytes(node.content()), how, log);
}

bool unwrapContent(TreeNode& node, const BinaryContent& how, LogBase& log) {
  SecretBuffer text;
  if (!unwrap(node.content(), how, text.buffer(), log)) return false;
  if (!isValidUtf8(text.bytes())) return fail("The bytes in the content are not text.", log);
  node.setContent(text.buffer().text());
  return true;
}

bool zipTree(const TreeNode& node, StringBuffer& zipped, LogBase& log) {
  StringBuffer xml = emptyText();
  if (!writeXmlExactly(&node, xml))
    return fail("A tag or a name of an attribute could not be read again.", log);
  return wrap(asBytes(xml.view()), {.zip = true}, zipped, log);
}

bool unzipTree(TreeNode& node, XmlStore& store, LogBase& log) {
  DataBuffer xml;
  if (!unwrap(node.content(), {.zip = true}, xml, log)) return false;
  if (!isValidUtf8(xml.bytes())) return fail("The bytes in the content are not text.", log);
  TreeInfo* const tree = ParseEngine(store, {.trim = false}, log, nullptr).parse(xml.text());
  if (tree == nullptr) return fail("The content is no tree that was made a text.", log);
  TreeNode* const root = XmlStore::dissolve(tree);
  node.setContent(root->content());
  node.setCdata(root->isCdata());
  moveChildren(*root, node);
  store.end(root);
  return true;
}

}  // namespace zantrel
