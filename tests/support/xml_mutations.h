#pragma once
// Documents a little damaged, always in the same ways: what parsers differ about, if at all.

#include <cstddef>
#include <iterator>
#include <random>
#include <string>

namespace zantrel::test {

class XmlMutations {
 public:
  explicit XmlMutations(std::string document) : document_(std::move(document)) {}

  std::string next() {
    std::string text = document_;
    for (std::size_t changes = 1 + below(2); changes > 0; --changes) change(text);
    return text;
  }

 private:
  std::size_t below(std::size_t limit) { return random_() % limit; }

  void change(std::string& text) {
    static constexpr const char* kMarks[] = {"<",    ">",
                                             "&",    "\"",
                                             "'",    "]]>",
                                             "--",   "<!--",
                                             "-->",  "<![CDATA[",
                                             "&lt;", "%",
                                             "?>",   "<?",
                                             "/",    "=",
                                             "[",    "]",
                                             "(",    ")",
                                             "|",    ",",
                                             "*",    "#",
                                             " ",    "\n",
                                             ":",    "<!ENTITY e '",
                                             "&e;",  "&#0;",
                                             "<a>",  "1.",
                                             ";",    "</a>",
                                             "\xC3", "%x;",
                                             "x",    "\xEF\xBF\xBE",
                                             "\x01", "&#x41;"};
    const std::size_t at = below(text.size() + 1);
    switch (below(4)) {
      case 0:
        if (at < text.size()) text[at] = static_cast<char>(below(256));
        break;
      case 1:
        text.erase(at, 1 + below(4));
        break;
      case 2:
        text.insert(at, kMarks[below(std::size(kMarks))]);
        break;
      default:
        text.insert(at, text.substr(below(text.size() + 1), 1 + below(20)));
    }
  }

  std::string document_;
  std::mt19937 random_{5};
};

}  // namespace zantrel::test
