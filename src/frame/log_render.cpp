// One walk over the tree serves the three renderings; a style says how a context opens and closes
// and how an entry without children looks. The walk keeps its own stack, so that a log of any depth
// can be rendered.

#include "frame/log_render.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "core/string_buffer.h"
#include "frame/log_entry2.h"

namespace zantrel {

namespace {

// Appends with room that doubles: the buffer's own fixed steps would copy a large log many times.
class Output {
 public:
  explicit Output(StringBuffer& out) : out_(out) {}

  Output& operator<<(std::string_view text) {
    makeRoom(text.size());
    out_.append(text);
    return *this;
  }

  void indent(std::size_t depth) {
    static constexpr std::string_view kBlanks = "                                ";
    for (std::size_t left = 2 * depth; left > 0;) {
      const std::size_t part = std::min(left, kBlanks.size());
      *this << kBlanks.substr(0, part);
      left -= part;
    }
  }

 private:
  void makeRoom(std::size_t extra) {
    const auto capacity = static_cast<std::size_t>(out_.capacity());
    const std::size_t size = out_.getSize();
    if (size + extra < capacity) return;
    if (!out_.reserve(std::max(extra, size))) out_.reserve(extra);
  }

  StringBuffer& out_;
};

struct TextStyle {
  static void open(Output& out, const LogEntry2& context, std::size_t depth) {
    out.indent(depth);
    out << context.tag() << ":\r\n";
  }
  static void close(Output&, const LogEntry2&) {}
  static void leaf(Output& out, const LogEntry2& entry, std::size_t depth) {
    out.indent(depth);
    if (entry.hasTag()) out << entry.tag() << ": ";
    out << entry.text() << "\r\n";
  }
};

struct XmlStyle {
  static void open(Output& out, const LogEntry2& context, std::size_t) {
    out << "<" << context.tag() << ">\r\n";
  }
  static void close(Output& out, const LogEntry2& context) {
    out << "</" << context.tag() << ">\r\n";
  }
  static void leaf(Output& out, const LogEntry2& entry, std::size_t) {
    if (entry.kind() == LogEntry2::Kind::Fragment) {
      out << entry.text() << "\r\n";
      return;
    }
    const std::string_view element = entry.kind() == LogEntry2::Kind::Data    ? entry.tag()
                                     : entry.kind() == LogEntry2::Kind::Error ? "error"
                                                                              : "info";
    out << "<" << element << ">";
    content(out, entry.text());
    out << "</" << element << ">\r\n";
  }
  static void content(Output& out, std::string_view text) {
    static constexpr std::string_view kOpen = "<![CDATA[";
    static constexpr std::string_view kClose = "]]>";
    const bool markup = text.find_first_of("\n\t&><") != std::string_view::npos;
    const bool hasSection = markup && text.find(kOpen) != std::string_view::npos &&
                            text.find(kClose) != std::string_view::npos;
    if (markup && !hasSection) {
      out << kOpen << text << kClose;
    } else {
      out << text;
    }
  }
};

struct HtmlStyle {
  static void open(Output& out, const LogEntry2& context, std::size_t) {
    out << context.tag() << ":<blockquote>\r\n";
  }
  static void close(Output& out, const LogEntry2&) { out << "</blockquote>\r\n"; }
  static void leaf(Output& out, const LogEntry2& entry, std::size_t) {
    if (entry.hasTag()) out << entry.tag() << ": ";
    escaped(out, entry.text());
    out << "<br>\r\n";
  }
  static void escaped(Output& out, std::string_view text) {
    for (;;) {
      const std::size_t special = text.find_first_of("&<>\"");
      if (special == std::string_view::npos) break;
      out << text.substr(0, special) << entity(text[special]);
      text.remove_prefix(special + 1);
    }
    out << text;
  }
  static std::string_view entity(char c) {
    switch (c) {
      case '&':
        return "&amp;";
      case '<':
        return "&lt;";
      case '>':
        return "&gt;";
      default:
        return "&quot;";
    }
  }
};

// An entry that lacks what its kind shows, for want of storage or of a name, renders nothing.
bool renderable(const LogEntry2& entry) {
  switch (entry.kind()) {
    case LogEntry2::Kind::Context:
      return entry.children() != nullptr && entry.hasTag();
    case LogEntry2::Kind::Data:
      return entry.hasTag() && entry.hasText();
    default:
      return entry.hasText();
  }
}

template <class Style>
void render(const LogEntry2& root, StringBuffer& buffer) {
  struct Open {
    const LogEntry2* context;
    std::int32_t next;
  };
  if (!renderable(root)) return;
  Output out(buffer);
  std::vector<Open> open{{&root, 0}};
  Style::open(out, root, 0);
  while (!open.empty()) {
    Open& top = open.back();
    if (top.next == top.context->childCount()) {
      Style::close(out, *top.context);
      open.pop_back();
      continue;
    }
    const LogEntry2& entry = top.context->child(top.next++);
    const std::size_t depth = open.size();
    if (!renderable(entry)) continue;
    if (entry.kind() == LogEntry2::Kind::Context) {
      Style::open(out, entry, depth);
      open.push_back({&entry, 0});
    } else {
      Style::leaf(out, entry, depth);
    }
  }
}

}  // namespace

void renderLogText(const LogEntry2& root, StringBuffer& out) {
  render<TextStyle>(root, out);
}
void renderLogXml(const LogEntry2& root, StringBuffer& out) {
  render<XmlStyle>(root, out);
}
void renderLogHtml(const LogEntry2& root, StringBuffer& out) {
  render<HtmlStyle>(root, out);
}

}  // namespace zantrel
