#include "xml_paths.h"

namespace zantrel_cli {

PathParts partsOf(const std::string& path) {
  const std::size_t bar = path.rfind('|');
  const std::string last = bar == path.npos ? path : path.substr(bar + 1);
  PathParts parts;
  const bool isAttribute = last.size() > 2 && last.front() == '(' && last.back() == ')';
  if (isAttribute) parts.attribute = last.substr(1, last.size() - 2);
  parts.wholeElement = last == "$";
  if (!isAttribute && last != "*" && last != "$")
    parts.element = path;
  else if (bar != path.npos)
    parts.element = path.substr(0, bar);
  return parts;
}

bool goTo(Session<Zantrel::Xml>& session, const std::string& element) {
  std::string unused;
  return element.empty() || session.report(session.component().ZantrelPath(element + "|$", unused));
}

bool TreeWalk::next() {
  if (!begun_) return begun_ = true;
  if (xml_.get_NumChildren() > 0 && xml_.FirstChild2()) {
    levels_.push_back({path_.size(), 0, {}});
    addStep(levels_.back());
    return true;
  }
  while (!levels_.empty()) {
    Level& level = levels_.back();
    path_.resize(level.pathSize);
    if (xml_.NextSibling2()) {
      addStep(level);
      return true;
    }
    levels_.pop_back();
    if (!xml_.GetParent2()) return false;
  }
  return false;
}

void TreeWalk::addStep(Level& level) {
  std::string tag = xml_.get_Tag();
  const std::size_t sameTag = level.tags[tag]++;
  const std::size_t number = level.count++;
  if (!path_.empty()) path_ += '|';
  // What the syntax of paths has a meaning for is named by its number.
  const bool plain = !tag.empty() && tag != "*" && tag != "$" && tag != ".." &&
                     tag.front() != '(' && tag.find_first_of("|[]") == tag.npos;
  if (!plain)
    path_ += '[' + std::to_string(number) + ']';
  else if (sameTag == 0)
    path_ += tag;
  else
    path_ += tag + '[' + std::to_string(sameTag) + ']';
}

}  // namespace zantrel_cli
