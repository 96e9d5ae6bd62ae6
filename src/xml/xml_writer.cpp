#include "xml/xml_writer.h"

#include <algorithm>
#include <string_view>

#include "xml/tree_info.h"
#include "xml/tree_node.h"
#include "xml/xml_escape.h"
#include "xml/xml_output.h"

namespace zantrel {

namespace {

constexpr std::string_view kNewline = "\r\n";

class Writer {
 public:
  Writer(const TreeNode* top, StringBuffer& out) : top_(top), out_(out) {}

  void writeProlog(TreeInfo& tree) {
    if (tree.declaration == nullptr) return;
    alignStandalone(tree);
    out_.put("<?xml");
    writeAttributes(*tree.declaration);
    out_.put(" ?>\r\n");
    for (const StringBuffer* text : {&tree.styleSheet, &tree.docType}) {
      if (text->getSize() == 0) continue;
      out_.put(text->view());
      out_.put(kNewline);
    }
  }

  // In document order, with the closing tags on the way up.
  void writeTree() {
    const TreeNode* node = top_;
    std::size_t depth = 0;
    for (;;) {
      writeStart(*node, depth);
      if (node->numChildren() != 0) {
        out_.put(kNewline);
        node = node->child(0);
        ++depth;
        continue;
      }
      const TreeNode* const following = node->nextBeside(top_);
      const TreeNode* const above = following != nullptr ? following->parent() : nullptr;
      while (node != top_ && node->parent() != above) {
        node = node->parent();
        writeEnd(*node, --depth);
      }
      if (following == nullptr) return;
      node = following;
    }
  }

 private:
  static void alignStandalone(TreeInfo& tree) {
    AttributeSet& attributes = tree.declaration->editAttributes();
    const std::ptrdiff_t found = attributes.find("standalone");
    const std::string_view value = tree.standalone ? "yes" : "no";
    if (found >= 0)
      attributes.setValue(static_cast<std::size_t>(found), value);
    else if (tree.standalone)
      attributes.add("standalone", value);
  }

  static std::string_view tagOf(const TreeNode& node) {
    return node.tag().empty() ? "nothing" : node.tag();
  }

  void indent(std::size_t depth) {
    constexpr std::size_t kDeepest = 50;
    out_.putBlanks(4 * std::min(depth, kDeepest));
  }

  void writeAttributes(const TreeNode& node) {
    for (const AttributeSet::Attribute& attribute : node.attributes()) {
      out_.put(' ');
      out_.put(attribute.nameView());
      out_.put("=\"");
      putEscapedValue(out_, attribute.valueView());
      out_.put('"');
    }
  }

  void writeStart(const TreeNode& node, std::size_t depth) {
    indent(depth);
    out_.put('<');
    out_.put(tagOf(node));
    writeAttributes(node);
    const std::string_view content = node.content();
    if (content.empty() && node.numChildren() == 0) {
      out_.put(" />\r\n");
      return;
    }
    out_.put('>');
    if (node.isCdata())
      writeCdata(content);
    else
      putEscapedContent(out_, content);
    if (node.numChildren() != 0) return;
    if (content.ends_with('\n')) indent(depth);
    writeClosingTag(node);
  }

  void writeEnd(const TreeNode& node, std::size_t depth) {
    indent(depth);
    writeClosingTag(node);
  }

  void writeClosingTag(const TreeNode& node) {
    out_.put("</");
    out_.put(tagOf(node));
    out_.put(">\r\n");
  }

  // Content that holds the end of a section loses that and every start: deliberate.
  void writeCdata(std::string_view content) {
    constexpr std::string_view kStart = "<![CDATA[";
    constexpr std::string_view kEnd = "]]>";
    out_.put(kStart);
    if (content.find(kEnd) == content.npos) {
      out_.put(content);
    } else {
      std::size_t plain = 0;
      for (std::size_t i = 0; i < content.size();) {
        const std::string_view rest = content.substr(i);
        const std::size_t dropped = rest.starts_with(kStart) ? kStart.size()
                                    : rest.starts_with(kEnd) ? kEnd.size()
                                                             : 0;
        if (dropped == 0) {
          ++i;
          continue;
        }
        out_.put(content.substr(plain, i - plain));
        i += dropped;
        plain = i;
      }
      out_.put(content.substr(plain));
    }
    out_.put(kEnd);
  }

  const TreeNode* top_;
  XmlOutput out_;
};

}  // namespace

void writeXml(TreeNode* node, bool omitDeclaration, StringBuffer& out) {
  Writer writer(node, out);
  if (node->isRoot() && !omitDeclaration) writer.writeProlog(*node->tree());
  writer.writeTree();
}

}  // namespace zantrel
