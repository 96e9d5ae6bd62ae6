// Changes an XML file: adds to the count of every item that has the given name, sorts the items by
// name, and writes the file anew.
//
//   edit_xml stock.xml bolt 5

#include <zantrel/zantrel.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  if (argc != 4) return std::fprintf(stderr, "usage: edit_xml FILE NAME AMOUNT\n"), 2;
  Zantrel::Xml stock;
  if (!stock.LoadXmlFile(argv[1])) return std::fputs(stock.get_LastErrorText().c_str(), stderr), 1;

  int changed = 0;
  const auto after = stock.GetSelf();
  while (const auto item = stock.SearchForAttribute(*after, "item", "name", argv[2], false)) {
    item->AddToChildContent("count", std::atoi(argv[3]));
    *after = std::move(*item);
    ++changed;
  }
  stock.SortByAttribute("name", true);

  if (!stock.SaveXml(argv[1])) return std::fputs(stock.get_LastErrorText().c_str(), stderr), 1;
  std::printf("%d items changed\n%s", changed, stock.GetXml().c_str());
}
