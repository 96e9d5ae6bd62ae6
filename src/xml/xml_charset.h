#pragma once
// Documents as bytes: in which charset they are, and conversion to and from the UTF-8 of trees.

#include <string_view>

#include "core/bytes.h"

namespace zantrel {

class DataBuffer;
class LogBase;
class TreeNode;

/// The text of a document. Its charset is that of the byte-order mark, else what the first
/// characters look like in UTF-16 and UTF-32, else what the declaration names, else UTF-8. A
/// document that can be read as ASCII is no UTF-16, whatever it says, and one of unknown charset is
/// taken for UTF-8. `text` is a part of the bytes or of `storage`. False, with the reason and its
/// place in the log, when bytes are not valid in the charset.
bool xmlTextOf(ByteSpan bytes, DataBuffer& storage, std::string_view& text, LogBase& log);

/// What a document is written as in the encoding of its declaration (empty names UTF-8), with a
/// byte-order mark for UTF-16 and UTF-32. Characters that the charset lacks become references where
/// these are understood. False, with the reason in the log, for an unknown encoding, and when it
/// lacks a character elsewhere: in a tag, an attribute's name, a CDATA section or before the root.
bool xmlBytesOf(const TreeNode* top, std::string_view text, std::string_view encoding,
                DataBuffer& out, LogBase& log);

}  // namespace zantrel
