// Finding by attribute, content and path, and sorting, in XML trees of more and more records,
// beside pugixml, which is used as its own programs do: a walk that compares, a sort of pointers.
// Items are elements for finding and records for sorting: where their rate stays the same, time is
// linear. What xml_bench.cpp has is finding by tag.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#ifdef HAVE_PUGIXML
#include <pugixml.hpp>
#endif

#include "core/log_null.h"
#include "xml/parse_engine.h"
#include "xml/xml_path.h"
#include "xml/xml_search.h"
#include "xml/xml_sort.h"
#include "xml/xml_store.h"

namespace {

using namespace zantrel;

constexpr std::int64_t kElementsInRecord = 3;

/// Records in no order, and what is searched for behind them.
std::string documentOf(std::int64_t records) {
  std::mt19937 random(1);  // NOLINT: repeatable
  std::string text = "<list>";
  for (std::int64_t i = 0; i < records; ++i) {
    text += "<record id=\"" + std::to_string(random() % 1000000) + "\"><name>name " +
            std::to_string(random() % 1000000) + "</name><count>" + std::to_string(i) +
            "</count></record>";
  }
  return text + "<last kind=\"needle\">a needle here</last></list>";
}

struct Ours {
  explicit Ours(const std::string& xml) {
    LogNull log;
    root = ParseEngine(*store, {}, log, nullptr).parse(xml)->root;
  }
  XmlStore::Ref store = XmlStore::create();
  TreeNode* root;
};

void countElements(benchmark::State& state, std::int64_t records) {
  state.SetItemsProcessed(state.iterations() * records * kElementsInRecord);
}

void findWith(benchmark::State& state, std::int64_t records, const XmlCriteria& criteria) {
  const Ours ours(documentOf(records));
  for (auto _ : state) {
    if (findNext(ours.root, nullptr, XmlMatcher(criteria)) == nullptr) state.SkipWithError("lost");
  }
  countElements(state, records);
}

void findAttribute(benchmark::State& state, std::int64_t records) {
  findWith(state, records, {.attribute = "kind", .value = "needle"});
}
void findContent(benchmark::State& state, std::int64_t records) {
  findWith(state, records, {.content = "*needle*"});
}

void followPath(benchmark::State& state, std::int64_t records) {
  const Ours ours(documentOf(records));
  const std::string path = "record[" + std::to_string(records - 1) + "]|count";
  LogNull log;
  XmlPathTarget target;
  for (auto _ : state)
    if (!followXmlPath(ours.root, path, target, log)) state.SkipWithError("lost");
  countElements(state, records);
}

// Forth by one key and back by another, so that there is always something to do.
void sortRecords(benchmark::State& state, std::int64_t records) {
  const Ours ours(documentOf(records));
  bool forth = true;
  for (auto _ : state) {
    using Of = XmlSortKey::Of;
    sortChildren(*ours.root, forth ? XmlSortKey{.of = Of::Content, .recordTag = "name"}
                                   : XmlSortKey{.of = Of::Attribute, .attribute = "id"});
    forth = !forth;
  }
  state.SetItemsProcessed(state.iterations() * records);
}

#ifdef HAVE_PUGIXML
void findAttributePugi(benchmark::State& state, std::int64_t records) {
  const std::string xml = documentOf(records);
  pugi::xml_document document;
  document.load_string(xml.c_str());
  for (auto _ : state) {
    const std::string value = "needle";
    const auto found = document.find_node(
        [&value](const pugi::xml_node& node) { return value == node.attribute("kind").value(); });
    if (!found) state.SkipWithError("lost");
  }
  countElements(state, records);
}

void sortRecordsPugi(benchmark::State& state, std::int64_t records) {
  const std::string xml = documentOf(records);
  pugi::xml_document document;
  document.load_string(xml.c_str());
  bool forth = true;
  struct Keyed {
    std::string_view key;
    pugi::xml_node node;
  };
  for (auto _ : state) {
    pugi::xml_node list = document.first_child();
    std::vector<Keyed> sorted;
    for (const pugi::xml_node child : list.children())
      sorted.push_back({forth ? child.child_value("name") : child.attribute("id").value(), child});
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Keyed& a, const Keyed& b) { return a.key < b.key; });
    for (const Keyed& one : sorted) list.append_move(one.node);
    forth = !forth;
  }
  state.SetItemsProcessed(state.iterations() * records);
}
#endif

struct Row {
  const char* operation;
  const char* implementation;
  void (*measure)(benchmark::State&, std::int64_t records);
};
constexpr Row kRows[] = {
    {"xml_find/attribute", "zantrel", findAttribute},
    {"xml_find/content", "zantrel", findContent},
    {"xml_find/path", "zantrel", followPath},
    {"xml_sort/records", "zantrel", sortRecords},
#ifdef HAVE_PUGIXML
    {"xml_find/attribute", "pugixml", findAttributePugi},
    {"xml_sort/records", "pugixml", sortRecordsPugi},
#endif
};

[[maybe_unused]] const bool kRegistered = [] {
  for (const std::int64_t records : {1000, 30000, 1000000}) {
    for (const Row& row : kRows) {
      const std::string name =
          row.operation + ("/" + std::to_string(records) + "/") + row.implementation;
      benchmark::RegisterBenchmark(
          name.c_str(), [row, records](benchmark::State& state) { row.measure(state, records); });
    }
  }
  return true;
}();

}  // namespace
