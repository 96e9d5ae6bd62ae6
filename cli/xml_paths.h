#pragma once
// Paths to elements and their attributes.

#include <zantrel/xml.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "session.h"

namespace zantrel_cli {

/// A path in the part that leads to an element, and what is asked of it.
struct PathParts {
  std::string element;        ///< empty for the element that the path starts from
  std::string attribute;      ///< empty where the path asks for none
  bool wholeElement = false;  ///< the path ends with "$"
};
PathParts partsOf(const std::string& path);

/// Moves a session from the root to an element. Says why when that fails.
bool goTo(Session<Zantrel::Xml>& session, const std::string& element);

/// Goes through all elements of a document in its order, and knows the path to each from the root.
class TreeWalk {
 public:
  explicit TreeWalk(Zantrel::Xml& xml) : xml_(xml) {}

  /// Moves to the next element; false behind the last one.
  bool next();
  /// Of the element reached; "$" for the root.
  std::string_view path() const { return path_.empty() ? std::string_view("$") : path_; }

 private:
  struct Level {
    std::size_t pathSize;                               // of the path to the parent
    std::size_t count = 0;                              // children so far
    std::unordered_map<std::string, std::size_t> tags;  // the same by tag
  };

  void addStep(Level& level);

  Zantrel::Xml& xml_;
  std::string path_;
  std::vector<Level> levels_;
  bool begun_ = false;
};

}  // namespace zantrel_cli
