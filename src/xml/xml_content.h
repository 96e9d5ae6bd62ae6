#pragma once
// What content of an element can be turned into, and back. Where one of these functions fails, the
// reason is logged and the content is what it was. The CDATA flag stays as it is.

#include <string_view>

#include "core/bytes.h"
#include "core/encode/encoded_words.h"

namespace zantrel {

class DataBuffer;
class LogBase;
class StringBuffer;
class TreeNode;
class XmlStore;

/// The content becomes encoded words of mail headers (RFC 2047) in a charset: "=?utf-8?Q?...?=", or
/// "=?utf-8?B?...?=". A long one becomes several of at most 75 characters, with blanks between
/// them. Fails for an unknown charset, and when the charset lacks a character of the content.
bool encodeContent(TreeNode& node, std::string_view charset, WordCoding coding, LogBase& log);
/// Encoded words in the content become what they stand for, the white space between two of them
/// vanishes, and all else stays as it is. Words in a charset that is not known stay too.
bool decodeContent(TreeNode& node, LogBase& log);
/// References to characters in the content become characters, all that HTML knows: "&eacute;",
/// "&#233;", "&#xE9;", "&lt;" and the rest.
void decodeContentEntities(TreeNode& node);

/// How bytes stand in content: always in base64, on one line; before that they may be compressed
/// (the zlib format), and then encrypted with a password as password_seal.h has it.
struct BinaryContent {
  bool zip = false;
  bool encrypt = false;
  std::string_view password{};  ///< not empty where `encrypt` is set
};

/// Bytes become the content.
bool setBinaryContent(TreeNode& node, ByteSpan bytes, const BinaryContent& how, LogBase& log);
/// Appends the bytes in the content, made by setBinaryContent() in the same way. Base64 is read
/// whatever it looks like; what has been compressed or encrypted must be complete and unchanged,
/// and the password that which it was encrypted with. So that a small document cannot fill the
/// memory, compressed bytes may become 100 times as many, and up to 256 MB in any case.
bool getBinaryContent(const TreeNode& node, const BinaryContent& how, DataBuffer& out,
                      LogBase& log);

/// The content itself, which is UTF-8, is taken for the bytes: so it is compressed, encrypted or
/// both, and becomes text again. The latter fails also when the bytes are not UTF-8.
bool wrapContent(TreeNode& node, const BinaryContent& how, LogBase& log);
bool unwrapContent(TreeNode& node, const BinaryContent& how, LogBase& log);

/// The content and all below the node, as one text: XML, compressed, in base64. The caller makes
/// it the content of the node, takes the CDATA flag away, and removes the children. Tag and
/// attributes of the node are not in it. Fails when a tag or a name of an attribute below the node
/// has characters that end a name, such as blanks.
bool zipTree(const TreeNode& node, StringBuffer& zipped, LogBase& log);
/// The content and the children that zipTree() made a text of take its place, exactly as they were;
/// children that the node has stay in front of them. The limit of getBinaryContent() holds. The
/// store is the one that the node is in.
bool unzipTree(TreeNode& node, XmlStore& store, LogBase& log);

}  // namespace zantrel
