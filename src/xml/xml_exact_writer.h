#pragma once

namespace zantrel {

class StringBuffer;
class TreeNode;

/// Writes a subtree in a form that, read without trimming, makes the same again: without
/// indentation, with every "&" a reference and "]]>" in CDATA sections kept by cutting them there.
/// The attributes of `top` are left out. False when a tag, or a name of an attribute below `top`,
/// would be read as another one. Throws std::bad_alloc.
bool writeXmlExactly(const TreeNode* top, StringBuffer& out);

}  // namespace zantrel
