#include "xml/xml_writer.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "xml/tree_info.h"
#include "xml/tree_node.h"
#include "xml/xml_escape.h"
#include "xml/xml_output.h"

namespace zantrel {

namespace {

constexpr std::string_view kNewline = "\r\n";

// Its functions take the place up to which the text is written and return the next.
class Writer {
 public:
  Writer(const TreeNode* top, StringBuffer& out) : top_(top), out_(out) {}

  void write(TreeInfo* prolog) {
    char* to = nullptr;
    if (prolog != nullptr) to = writeProlog(to, *prolog);
    out_.finish(writeTree(to));
  }

 private:
  char* writeProlog(char* to, TreeInfo& tree) {
    if (tree.declaration == nullptr) return to;
    alignStandalone(tree);
    to = out_.put(to, "<?xml");
    to = writeAttributes(to, *tree.declaration);
    to = out_.put(to, " ?>\r\n");
    for (const StringBuffer* text : {&tree.styleSheet, &tree.docType}) {
      if (text->getSize() == 0) continue;
      to = out_.put(to, text->view());
      to = out_.put(to, kNewline);
    }
    return to;
  }

  static void alignStandalone(TreeInfo& tree) {
    AttributeSet& attributes = tree.declaration->editAttributes();
    const std::ptrdiff_t found = attributes.find("standalone");
    const std::string_view value = tree.standalone ? "yes" : "no";
    if (found >= 0)
      attributes.setValue(static_cast<std::size_t>(found), value);
    else if (tree.standalone)
      attributes.add("standalone", value);
  }

  // In document order, with the closing tags on the way up.
  char* writeTree(char* to) {
    const TreeNode* node = top_;
    std::size_t depth = 0;
    for (;;) {
      to = writeStart(to, *node, depth);
      if (node->numChildren() != 0) {
        to = out_.put(to, kNewline);
        node = node->child(0);
        ++depth;
        continue;
      }
      const TreeNode* following = nullptr;
      while (node != top_ && (following = node->nextSibling()) == nullptr) {
        node = node->parent();
        to = writeEnd(to, *node, --depth);
      }
      if (node == top_) return to;
      node = following;
    }
  }

  static std::string_view tagOf(const TreeNode& node) {
    static constexpr std::string_view kNothing = "nothing";
    static constexpr char kPadded[kNothing.size() + XmlSlice::kSlack] = "nothing";
    return node.tag().empty() ? std::string_view(kPadded, kNothing.size()) : node.tag();
  }

  char* indent(char* to, std::size_t depth) {
    constexpr std::size_t kDeepest = 50;
    constexpr std::string_view kBlanks = "                ";
    const std::size_t count = 4 * std::min(depth, kDeepest);
    to = out_.room(to, count + kBlanks.size());
    for (std::size_t done = 0; done < count; done += kBlanks.size())
      std::memcpy(to + done, kBlanks.data(), kBlanks.size());
    return to + count;
  }

  char* writeAttributes(char* to, const TreeNode& node) {
    for (const AttributeSet::Attribute& attribute : node.attributes()) {
      to = out_.put(to, " ");
      to = out_.putSlice(to, attribute.nameView());
      to = out_.put(to, "=\"");
      to = putEscapedValue(out_, to, attribute.valueView());
      to = out_.put(to, "\"");
    }
    return to;
  }

  char* writeStart(char* to, const TreeNode& node, std::size_t depth) {
    to = indent(to, depth);
    to = out_.put(to, "<");
    to = out_.putSlice(to, tagOf(node));
    to = writeAttributes(to, node);
    const std::string_view content = node.content();
    if (content.empty() && node.numChildren() == 0) return out_.put(to, " />\r\n");
    to = out_.put(to, ">");
    to = node.isCdata() ? writeCdata(to, content) : putEscapedContent(out_, to, content);
    if (node.numChildren() != 0) return to;
    if (content.ends_with('\n')) to = indent(to, depth);
    return writeClosingTag(to, node);
  }

  char* writeEnd(char* to, const TreeNode& node, std::size_t depth) {
    return writeClosingTag(indent(to, depth), node);
  }

  char* writeClosingTag(char* to, const TreeNode& node) {
    to = out_.put(to, "</");
    to = out_.putSlice(to, tagOf(node));
    return out_.put(to, ">\r\n");
  }

  // Content that holds the end of a section loses that and every start: deliberate.
  char* writeCdata(char* to, std::string_view content) {
    constexpr std::string_view kStart = "<![CDATA[";
    constexpr std::string_view kEnd = "]]>";
    to = out_.put(to, kStart);
    if (content.find(kEnd) == content.npos) {
      to = out_.put(to, content);
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
        to = out_.put(to, content.substr(plain, i - plain));
        i += dropped;
        plain = i;
      }
      to = out_.put(to, content.substr(plain));
    }
    return out_.put(to, kEnd);
  }

  const TreeNode* top_;
  XmlOutput out_;
};

}  // namespace

void writeXml(TreeNode* node, bool omitDeclaration, StringBuffer& out) {
  Writer(node, out).write(node->isRoot() && !omitDeclaration ? node->tree() : nullptr);
}

}  // namespace zantrel
