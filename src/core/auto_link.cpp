#include "core/auto_link.h"

#include <algorithm>
#include <array>

#include "core/string_buffer.h"
#include "core/text_search.h"

namespace zantrel {
namespace {

constexpr std::string_view kPrefixes[] = {"http://", "https://", "ftp://", "mailto:", "www."};
constexpr std::string_view kUrlEnds[] = {"&lt;",  "&gt;",   "&quot;", "&#34;",
                                         "&#39;", "&apos;", "&nbsp;"};

/// Elements whose content holds no text to link, with what closes them.
struct Opaque {
  std::string_view open;
  std::string_view close;
};
constexpr Opaque kOpaque[] = {{"<!--", "-->"},         {"<a", "</a"},
                              {"<script", "</script"}, {"<style", "</style"},
                              {"<title", "</title"},   {"<textarea", "</textarea"}};

constexpr bool isAlphanumeric(char c) noexcept {
  return (c >= '0' && c <= '9') || (asciiLower(c) >= 'a' && asciiLower(c) <= 'z');
}

bool beginsNoCase(std::string_view text, std::string_view prefix) noexcept {
  return equalsAsciiNoCase(text.substr(0, prefix.size()), prefix);
}

/// The URL that a text begins with, without its prefix; empty when none follows the prefix.
std::string_view urlBody(std::string_view text) noexcept {
  std::size_t size = 0;
  for (; size < text.size(); ++size) {
    const char c = text[size];
    if (static_cast<unsigned char>(c) <= ' ' || c == '<' || c == '>' || c == '"' || c == '\'')
      break;
    const auto endsHere = [rest = text.substr(size)](std::string_view end) {
      return beginsNoCase(rest, end);
    };
    if (c == '&' && std::any_of(std::begin(kUrlEnds), std::end(kUrlEnds), endsHere)) break;
  }
  std::string_view url = text.substr(0, size);
  auto open = std::count(url.begin(), url.end(), '(');
  auto close = std::count(url.begin(), url.end(), ')');
  while (!url.empty()) {
    const char last = url.back();
    if (last == ')' ? close-- <= open : std::string_view(".,;:!?").find(last) == url.npos) break;
    url.remove_suffix(1);
  }
  return !url.empty() && isAlphanumeric(url.front()) ? url : std::string_view();
}

class AutoLinker {
 public:
  AutoLinker(std::string_view text, StringBuffer& out) : text_(text), out_(out) {}

  bool run() {
    while (at_ < text_.size() && stored_) {
      if (!(text_[at_] == '<' ? passMarkup() : passUrl())) ++at_;
    }
    copyUpTo(text_.size());
    return stored_;
  }

 private:
  void append(std::string_view text) { stored_ = stored_ && out_.append(text); }
  void copyUpTo(std::size_t end) {
    append(text_.substr(copied_, end - copied_));
    copied_ = end;
  }

  /// Steps over a tag, a comment or an element whose content is left alone.
  bool passMarkup() {
    const std::string_view rest = text_.substr(at_);
    for (std::size_t i = 0; i < std::size(kOpaque); ++i) {
      const Opaque& element = kOpaque[i];
      if (unclosed_[i] || !beginsNoCase(rest, element.open)) continue;
      const bool longerName = element.open != "<!--" && rest.size() > element.open.size() &&
                              isAlphanumeric(rest[element.open.size()]);
      if (longerName) continue;
      const TextSearcher closing(element.close, TextSearcher::Case::IgnoreAscii);
      const std::size_t end = closing.find(text_, at_ + element.open.size());
      if (end != std::string_view::npos) {
        at_ = end + element.close.size();
        return true;
      }
      unclosed_[i] = true;  // nor is any that follows, so this is not searched for again
    }
    const bool isTag = rest.size() > 1 && (isAlphanumeric(rest[1]) || rest[1] == '/' ||
                                           rest[1] == '!' || rest[1] == '?');
    if (!isTag || noMoreTagEnds_) return false;
    const std::size_t end = text_.find('>', at_);
    noMoreTagEnds_ = end == std::string_view::npos;
    if (noMoreTagEnds_) return false;
    at_ = end + 1;
    return true;
  }

  bool passUrl() {
    if (at_ > 0 && isAlphanumeric(text_[at_ - 1])) return false;
    const std::string_view rest = text_.substr(at_);
    for (const std::string_view prefix : kPrefixes) {
      if (!beginsNoCase(rest, prefix)) continue;
      const std::string_view body = urlBody(rest.substr(prefix.size()));
      if (body.empty()) return false;
      link(rest.substr(0, prefix.size() + body.size()), prefix == "www." ? "http://" : "");
      return true;
    }
    return false;
  }

  void link(std::string_view url, std::string_view scheme) {
    copyUpTo(at_);
    append("<a href=\"");
    append(scheme);
    append(url);
    append("\">");
    append(url);
    append("</a>");
    at_ += url.size();
    copied_ = at_;
  }

  std::string_view text_;
  StringBuffer& out_;
  std::size_t at_ = 0;
  std::size_t copied_ = 0;
  bool stored_ = true;
  bool noMoreTagEnds_ = false;
  std::array<bool, std::size(kOpaque)> unclosed_{};
};

}  // namespace

bool autoLinkUrls(std::string_view text, StringBuffer& out) {
  return AutoLinker(text, out).run();
}

}  // namespace zantrel
