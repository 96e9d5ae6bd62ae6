// XML trees beside pugixml, libxml2 and Expat, which has no tree: loading, with the release of the
// tree; writing into a reused buffer; finding all elements of a tag; sorting records, by one field
// and another in turns. Bytes per second are of the document as it is loaded. `bytes_per_element`
// is what the heap holds for the tree and its text.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#ifdef HAVE_PUGIXML
#include <pugixml.hpp>
#endif
#ifdef HAVE_LIBXML2
#include <libxml/parser.h>
#include <libxml/tree.h>
#endif
#ifdef HAVE_EXPAT
#include <expat.h>
#endif

#include "core/log_null.h"
#include "core/string_buffer.h"
#include "xml/parse_engine.h"
#include "xml/xml_search.h"
#include "xml/xml_sort.h"
#include "xml/xml_store.h"
#include "xml/xml_writer.h"
#include "xml_samples.h"

namespace {

using namespace zantrel;

/// A loaded document.
class Tree {
 public:
  virtual ~Tree() = default;
  /// Answers how many bytes it wrote.
  virtual std::size_t write() { return 0; }
  /// How many elements have the tag.
  virtual std::size_t count(const char*) { return 0; }
};
using Load = std::unique_ptr<Tree> (*)(const std::string& xml);

class OurTree final : public Tree {
 public:
  explicit OurTree(const std::string& xml)
      : tree_(ParseEngine(*store_, {}, log_, nullptr).parse(xml)) {}
  std::size_t write() override {
    static StringBuffer out{std::string_view()};
    out.clear();
    writeXml(tree_->root, false, out);
    return out.getSize();
  }
  std::size_t count(const char* tag) override {
    const XmlMatcher matcher({.tag = tag});
    std::size_t found = 0;
    for (TreeNode* node = nullptr; (node = findNext(tree_->root, node, matcher)) != nullptr;)
      ++found;
    return found;
  }
  void sort(const XmlSortKey& key) { sortChildren(*tree_->root, key); }
  std::size_t elements() { return count("*"); }

 private:
  LogNull log_;
  XmlStore::Ref store_ = XmlStore::create();
  TreeInfo* tree_;
};

#ifdef HAVE_PUGIXML
class PugiTree final : public Tree {
 public:
  explicit PugiTree(const std::string& xml) {
    document_.load_buffer(xml.data(), xml.size(), pugi::parse_default, pugi::encoding_utf8);
  }
  std::size_t write() override {
    static Output out;
    out.text.clear();
    document_.save(out, "    ", pugi::format_default, pugi::encoding_utf8);
    return out.text.size();
  }
  std::size_t count(const char* tag) override {
    struct Counter final : pugi::xml_tree_walker {
      bool for_each(pugi::xml_node& node) override {
        found += std::strcmp(node.name(), tag) == 0;
        return true;
      }
      const char* tag = nullptr;
      std::size_t found = 0;
    } counter;
    counter.tag = tag;
    document_.traverse(counter);
    return counter.found;
  }

 private:
  struct Output final : pugi::xml_writer {
    void write(const void* data, std::size_t size) override {
      text.append(static_cast<const char*>(data), size);
    }
    std::string text;
  };
  pugi::xml_document document_;
};
#endif

#ifdef HAVE_LIBXML2
class LibxmlTree final : public Tree {
 public:
  explicit LibxmlTree(const std::string& xml)
      : document_(xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                                XML_PARSE_NOBLANKS | XML_PARSE_HUGE | XML_PARSE_COMPACT)) {}
  ~LibxmlTree() override { xmlFreeDoc(document_); }
  std::size_t write() override {
    xmlChar* text = nullptr;
    int size = 0;
    xmlDocDumpFormatMemory(document_, &text, &size, 1);
    xmlFree(text);
    return static_cast<std::size_t>(size);
  }
  std::size_t count(const char* tag) override {
    std::size_t found = 0;
    for (const xmlNode* node = xmlDocGetRootElement(document_); node != nullptr;) {
      if (node->type == XML_ELEMENT_NODE)
        found += std::strcmp(reinterpret_cast<const char*>(node->name), tag) == 0;
      if (node->type == XML_ELEMENT_NODE && node->children != nullptr) {
        node = node->children;
        continue;
      }
      while (node != nullptr && node->next == nullptr) node = node->parent;
      if (node != nullptr) node = node->next;
    }
    return found;
  }

 private:
  xmlDocPtr document_;
};
#endif

#ifdef HAVE_EXPAT
// Only reads: it counts what it comes across.
class ExpatCount final : public Tree {
 public:
  explicit ExpatCount(const std::string& xml) {
    XML_Parser parser = XML_ParserCreate("utf-8");
    XML_SetUserData(parser, this);
    XML_SetElementHandler(
        parser,
        [](void* user, const XML_Char*, const XML_Char**) {
          ++static_cast<ExpatCount*>(user)->count_;
        },
        [](void*, const XML_Char*) {});
    XML_SetCharacterDataHandler(parser, [](void* user, const XML_Char*, int size) {
      static_cast<ExpatCount*>(user)->count_ += static_cast<std::size_t>(size);
    });
    XML_Parse(parser, xml.data(), static_cast<int>(xml.size()), 1);
    XML_ParserFree(parser);
  }

 private:
  std::size_t count_ = 0;
};
#endif

template <class T>
std::unique_ptr<Tree> loadAs(const std::string& xml) {
  return std::make_unique<T>(xml);
}

struct Implementation {
  const char* name;
  Load load;
  bool hasTree = true;
};

const Implementation kImplementations[] = {
    {"zantrel", loadAs<OurTree>},
#ifdef HAVE_PUGIXML
    {"pugixml", loadAs<PugiTree>},
#endif
#ifdef HAVE_LIBXML2
    {"libxml2", loadAs<LibxmlTree>},
#endif
#ifdef HAVE_EXPAT
    {"expat", loadAs<ExpatCount>, false},
#endif
};

std::size_t heapBytes() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void measureLoad(benchmark::State& state, const Implementation& implementation,
                 const std::string& xml) {
  if (implementation.hasTree) {
    implementation.load(xml);  // what a library keeps forever does not count
    const std::size_t before = heapBytes();
    const std::unique_ptr<Tree> tree = implementation.load(xml);
    const auto taken = static_cast<double>(heapBytes() - before);
    state.counters["bytes_per_element"] = taken / static_cast<double>(OurTree(xml).elements());
    state.counters["bytes_per_byte"] = taken / static_cast<double>(xml.size());
  }
  for (auto _ : state) benchmark::DoNotOptimize(implementation.load(xml));
}

void measureWrite(benchmark::State& state, const Implementation& implementation,
                  const std::string& xml) {
  const std::unique_ptr<Tree> tree = implementation.load(xml);
  for (auto _ : state)
    if (tree->write() < xml.size() / 2) state.SkipWithError("incomplete");
}

void measureFind(benchmark::State& state, const Implementation& implementation,
                 const std::string& xml) {
  const std::unique_ptr<Tree> tree = implementation.load(xml);
  const std::size_t expected = OurTree(xml).count("place");
  for (auto _ : state)
    if (tree->count("place") != expected) state.SkipWithError("wrong");
}

void measureSort(benchmark::State& state, const Implementation&, const std::string& xml) {
  OurTree tree(xml);
  const XmlSortKey byName{.of = XmlSortKey::Of::Content, .recordTag = "name"};
  const XmlSortKey byPrice{.of = XmlSortKey::Of::Content, .recordTag = "price", .numeric = true};
  bool names = false;
  for (auto _ : state) tree.sort((names = !names) ? byName : byPrice);
}

struct Document {
  const char* name;
  std::string (*make)(std::size_t size);
  bool alsoHuge;
};
constexpr Document kDocuments[] = {{"records", bench::recordDocument, true},
                                   {"deep", bench::deepDocument, false},
                                   {"attributes", bench::attributeDocument, false},
                                   {"text", bench::textDocument, true}};
struct Size {
  const char* name;
  std::size_t bytes;
};
constexpr Size kSizes[] = {
    {"1K", 1 << 10}, {"200K", 200 << 10}, {"5M", 5 << 20}, {"50M", 50 << 20}};
constexpr std::size_t kHuge = 50 << 20;

using Measure = void (*)(benchmark::State&, const Implementation&, const std::string&);

void add(const std::string& operation, Measure measure, const Document& document, const Size& size,
         const Implementation& implementation) {
  const std::string name = operation + "/" + document.name + "/" + size.name + "/";
  benchmark::RegisterBenchmark((name + implementation.name).c_str(), [=](benchmark::State& state) {
    const std::string xml = document.make(size.bytes);
    measure(state, implementation, xml);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(xml.size()));
  });
}

[[maybe_unused]] const bool kRegistered = [] {
  // Keep memory between calls, or the kernel is what we measure.
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, 2000000000);
  for (const Document& document : kDocuments) {
    for (const Size& size : kSizes) {
      if (size.bytes == kHuge && !document.alsoHuge) continue;
      for (const Implementation& implementation : kImplementations) {
        add("xml_load", measureLoad, document, size, implementation);
        if (implementation.hasTree) add("xml_write", measureWrite, document, size, implementation);
      }
    }
  }
  const Document& records = kDocuments[0];
  for (const Size& size : kSizes) {
    for (const Implementation& implementation : kImplementations)
      if (implementation.hasTree) add("xml_find", measureFind, records, size, implementation);
    add("xml_sort", measureSort, records, size, kImplementations[0]);
  }
  return true;
}();

}  // namespace
