#include "xml/xml_exact_writer.h"

#include <string_view>

#include "xml/tree_node.h"
#include "xml/xml_output.h"

namespace zantrel {
namespace {

// What the parser takes for the end of a name.
constexpr std::string_view kEndsTag = " \t\r\n/>";
constexpr std::string_view kNotInName = " \t\r\n/>=\"'";

class ExactWriter {
 public:
  ExactWriter(const TreeNode* top, StringBuffer& out) : top_(top), out_(out) {}

  bool write() {
    for (const TreeNode* node = top_;;) {
      if (!writeStart(*node)) return false;
      if (node->numChildren() != 0) {
        node = node->child(0);
        continue;
      }
      writeEnd(*node);
      const TreeNode* const following = node->nextBeside(top_);
      const TreeNode* const above = following != nullptr ? following->parent() : nullptr;
      while (node != top_ && node->parent() != above) {
        node = node->parent();
        writeEnd(*node);
      }
      if (following == nullptr) break;
      node = following;
    }
    out_.finish(to_);
    return true;
  }

 private:
  void put(std::string_view text) { to_ = out_.put(to_, text); }

  bool writeStart(const TreeNode& node) {
    const std::string_view tag = node.tag();
    if (tag.starts_with('!') || tag.starts_with('?')) return false;
    if (tag.find_first_of(kEndsTag) != tag.npos) return false;
    put("<");
    put(tag);
    if (&node != top_ && !writeAttributes(node)) return false;
    put(">");
    if (node.isCdata())
      writeCdata(node.content());
    else
      writeEscaped(node.content());
    return true;
  }

  bool writeAttributes(const TreeNode& node) {
    for (const AttributeSet::Attribute& attribute : node.attributes()) {
      const std::string_view name = attribute.nameView();
      if (name.empty() || name.find_first_of(kNotInName) != name.npos) return false;
      put(" ");
      put(name);
      put("=\"");
      writeEscaped(attribute.valueView());
      put("\"");
    }
    return true;
  }

  void writeEscaped(std::string_view text) {
    constexpr std::string_view kSpecial = "&<\"";
    for (;;) {
      const std::size_t plain = text.find_first_of(kSpecial);
      put(text.substr(0, plain));
      if (plain == text.npos) return;
      put(text[plain] == '&' ? "&amp;" : text[plain] == '<' ? "&lt;" : "&quot;");
      text.remove_prefix(plain + 1);
    }
  }

  // Sections that follow each other are read as one.
  void writeCdata(std::string_view text) {
    constexpr std::string_view kStart = "<![CDATA[";
    constexpr std::string_view kEnd = "]]>";
    put(kStart);
    for (std::size_t end; (end = text.find(kEnd)) != text.npos;) {
      constexpr std::size_t kBrackets = 2;
      put(text.substr(0, end + kBrackets));
      put(kEnd);
      put(kStart);
      text.remove_prefix(end + kBrackets);
    }
    put(text);
    put(kEnd);
  }

  // A closing tag closes whatever its name is, and would itself end at a "<" in it.
  void writeEnd(const TreeNode& node) {
    put("</");
    if (node.tag().find('<') == std::string_view::npos) put(node.tag());
    put(">");
  }

  const TreeNode* top_;
  XmlOutput out_;
  char* to_ = nullptr;
};

}  // namespace

bool writeXmlExactly(const TreeNode* top, StringBuffer& out) {
  return ExactWriter(top, out).write();
}

}  // namespace zantrel
