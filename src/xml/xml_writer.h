#pragma once

#include "core/string_buffer.h"

namespace zantrel {

class TreeNode;

/// Appends a node and all below it in the one form in which XML is written: an element a line,
/// indented by four blanks for each level up to fifty, the lines ending with CRLF. The root of a
/// tree is preceded by the declaration, the style sheet instructions and the DOCTYPE, unless
/// `omitDeclaration` says otherwise; the declaration is brought in line with the tree's standalone
/// setting by it. Throws std::bad_alloc when memory ends or the text would pass 2^31-1 bytes.
void writeXml(TreeNode* node, bool omitDeclaration, StringBuffer& out);

}  // namespace zantrel
