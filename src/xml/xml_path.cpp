#include "xml/xml_path.h"

#include <charconv>
#include <cstdint>

#include "core/log_base.h"
#include "core/xstring.h"
#include "xml/tree_node.h"
#include "xml/xml_search.h"

namespace zantrel {
namespace {

enum class Outcome { Done, NoNode, NoAttribute, Malformed };

// Of a "tag[n]" in its parts; false when the brackets are malformed.
bool splitIndex(std::string_view step, std::string_view& tag, std::size_t& index) {
  const std::size_t bracket = step.find('[');
  tag = step.substr(0, bracket);
  index = 0;
  if (bracket == step.npos) return step.find(']') == step.npos;
  if (step.back() != ']') return false;
  const std::string_view digits = step.substr(bracket + 1, step.size() - bracket - 2);
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), index);
  return error == std::errc() && end == digits.data() + digits.size();
}

Outcome move(std::string_view step, TreeNode*& node) {
  std::string_view tag;
  std::size_t index = 0;
  if (step.empty() || !splitIndex(step, tag, index)) return Outcome::Malformed;
  TreeNode* const next = step == ".." ? node->parent() : findChild(*node, tag, index);
  if (next == nullptr) return Outcome::NoNode;
  node = next;
  return Outcome::Done;
}

bool asksForSomething(std::string_view step) {
  return step == "*" || step == "$" || step.starts_with('(');
}

Outcome ask(std::string_view step, XmlPathTarget& target) {
  if (step == "*") return Outcome::Done;
  if (step == "$") {
    target.kind = XmlPathTarget::Kind::Node;
    return Outcome::Done;
  }
  if (!step.ends_with(')')) return Outcome::Malformed;
  const AttributeSet& attributes = target.node->attributes();
  const std::ptrdiff_t found = attributes.find(step.substr(1, step.size() - 2));
  if (found < 0) return Outcome::NoAttribute;
  target.kind = XmlPathTarget::Kind::Attribute;
  target.text = attributes[static_cast<std::size_t>(found)].valueView();
  return Outcome::Done;
}

const char* reasonOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::NoNode:
      return "There is no node where a step of the path leads.";
    case Outcome::NoAttribute:
      return "The node that the path leads to has no such attribute.";
    default:
      return "A step of the path is malformed.";
  }
}

bool fail(Outcome outcome, std::string_view step, std::int32_t number, LogBase& log) {
  log.logError(reasonOf(outcome));
  log.logDataStr("pathStep", XString(step));
  log.logDataLong("stepNumber", number);
  return false;
}

}  // namespace

bool followXmlPath(TreeNode* start, std::string_view path, XmlPathTarget& target, LogBase& log) {
  target = {XmlPathTarget::Kind::Content, start, {}};
  std::string_view rest = path;
  bool more = !path.empty();
  for (std::int32_t number = 1; more; ++number) {
    const std::size_t bar = rest.find('|');
    const std::string_view step = rest.substr(0, bar);
    more = bar != rest.npos;
    if (more) rest.remove_prefix(bar + 1);
    const Outcome outcome = asksForSomething(step) ? (more ? Outcome::Malformed : ask(step, target))
                                                   : move(step, target.node);
    if (outcome != Outcome::Done) return fail(outcome, step, number, log);
  }
  if (target.kind == XmlPathTarget::Kind::Content) target.text = target.node->content();
  return true;
}

}  // namespace zantrel
