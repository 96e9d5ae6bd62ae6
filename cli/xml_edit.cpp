// zantrel xml format, set and sort: a document comes out again, in the one indented form.

#include <CLI/CLI.hpp>

#include <memory>

#include "xml_commands.h"
#include "xml_document.h"
#include "xml_paths.h"

namespace zantrel_cli {
namespace {

struct Options {
  DocumentOptions document;
  std::string output = "-";
  std::string encoding;
  std::string path, value;
  std::string by = "tag", attribute, record;
  bool numeric = false, reverse = false, ignoreCase = false;
};

using Edit = bool (*)(XmlDocument&, const Options&);

int run(const Context& context, const Options& options, Edit edit) {
  XmlDocument document(context);
  return document.load(options.document) && edit(document, options) && document.save(options.output)
             ? kDone
             : kFailed;
}

bool setEncoding(XmlDocument& document, const Options& options) {
  if (!options.encoding.empty()) document.xml().put_Encoding(options.encoding);
  return true;
}

bool setValue(XmlDocument& document, const Options& options) {
  const PathParts parts = partsOf(options.path);
  Zantrel::Xml& xml = document.xml();
  if (!goTo(document.session(), parts.element)) return false;
  if (!parts.attribute.empty())
    return document.session().report(xml.UpdateAttribute(parts.attribute, options.value));
  xml.put_Content(options.value);
  return true;
}

bool sortChildren(XmlDocument& document, const Options& options) {
  Zantrel::Xml& xml = document.xml();
  if (!goTo(document.session(), partsOf(options.path).element)) return false;
  xml.put_SortCaseInsensitive(options.ignoreCase);
  const bool up = !options.reverse;
  const bool records = !options.record.empty();
  bool done = false;
  if (options.by == "tag") {
    done = xml.SortByTag(up);
  } else if (options.by == "content") {
    done = !records          ? xml.SortByContent(up)
           : options.numeric ? xml.SortRecordsByContentInt(options.record, up)
                             : xml.SortRecordsByContent(options.record, up);
  } else {
    done = records           ? xml.SortRecordsByAttribute(options.record, options.attribute, up)
           : options.numeric ? xml.SortByAttributeInt(options.attribute, up)
                             : xml.SortByAttribute(options.attribute, up);
  }
  return document.session().report(done);
}

void checkNothing(const Options&) {}

void checkSorting(const Options& options) {
  const bool byAttribute = options.by == "attr";
  const bool records = !options.record.empty();
  if (byAttribute == options.attribute.empty())
    throw CLI::ValidationError("--name", "goes together with --by attr");
  if (records && options.by == "tag")
    throw CLI::ValidationError("--record", "needs --by content or --by attr");
  if (options.numeric && options.by != (records ? "content" : "attr"))
    throw CLI::ValidationError("--numeric",
                               "needs --by attr, or --by content together with --record");
}

CLI::App* add(CLI::App& parent, Context& context, const char* name, const char* description,
              const std::shared_ptr<Options>& options, Edit edit,
              void (*check)(const Options&) = checkNothing) {
  CLI::App* const command = parent.add_subcommand(name, description);
  addReading(*command, options->document);
  command->add_option("-o,--output", options->output,
                      "Output file, which may be the input file; - is standard output");
  command->callback([&context, options, edit, check] {
    check(*options);
    context.run = [&context, options, edit] { return run(context, *options, edit); };
  });
  return command;
}

void addFile(CLI::App& command, Options& options) {
  command.add_option("file", options.document.input, "XML file; - is standard input");
}

}  // namespace

void addXmlFormat(CLI::App& parent, Context& context) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command =
      add(parent, context, "format", "Indent a document", options, setEncoding);
  command->add_option("-e,--encoding", options->encoding, "Charset to declare and to write in");
  addFile(*command, *options);
}

void addXmlSet(CLI::App& parent, Context& context) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command = add(parent, context, "set",
                                "Set the content or an attribute of an element", options, setValue);
  command->add_option("path", options->path, "Path to the element, or to its attribute")
      ->required();
  command->add_option("value", options->value, "What it becomes")->required();
  addFile(*command, *options);
}

void addXmlSort(CLI::App& parent, Context& context) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command = add(parent, context, "sort", "Sort the children of an element", options,
                                sortChildren, checkSorting);
  command->add_option("-b,--by", options->by, "tag (the default), content or attr")
      ->check(CLI::IsMember({"tag", "content", "attr"}));
  command->add_option("--name", options->attribute, "Name of the attribute to sort by");
  command->add_option("-R,--record", options->record,
                      "Sort by the first child of this tag that each child has");
  command->add_option("-p,--path", options->path,
                      "Path to the element whose children are sorted, instead of the root");
  command->add_flag("-n,--numeric", options->numeric, "Compare as whole numbers");
  command->add_flag("-r,--reverse", options->reverse, "From the largest to the smallest");
  command->add_flag("-i,--ignore-case", options->ignoreCase,
                    "Take upper and lower case for the same");
  addFile(*command, *options);
}

}  // namespace zantrel_cli
