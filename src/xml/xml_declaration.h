#pragma once
// The XML declaration of a tree.

#include <string_view>

namespace zantrel {

class XmlStore;
struct TreeInfo;

/// Gives a tree without declaration that of a new document: version 1.0, UTF-8.
void makeDeclaration(XmlStore& store, TreeInfo& tree);
/// A value of the declaration; empty without it.
std::string_view declared(const TreeInfo& tree, std::string_view name);
/// Sets the encoding, making a declaration where there is none. Empty removes it.
void declareEncoding(XmlStore& store, TreeInfo& tree, std::string_view encoding);
/// The tree loses declaration, instructions, DOCTYPE and style sheets.
void clearProlog(XmlStore& store, TreeInfo& tree);
/// Copies these from another tree.
void copyProlog(XmlStore& store, const TreeInfo& from, TreeInfo& to);

}  // namespace zantrel
