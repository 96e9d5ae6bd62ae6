// zantrel xml get, find and validate: what a document holds, and whether it is one.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

#include "console.h"
#include "xml_commands.h"
#include "xml_document.h"
#include "xml_paths.h"

namespace zantrel_cli {
namespace {

// ---- get ----

struct GetOptions {
  DocumentOptions document;
  std::string path, tag;
};

/// With a tag there is no path: what stands in its place is the file.
void arrange(GetOptions& options) {
  if (options.tag.empty()) {
    if (options.path.empty()) throw CLI::RequiredError("path");
    return;
  }
  if (options.path.empty()) return;
  if (!isStandardStream(options.document.input))
    throw CLI::ValidationError("--tag", "takes the place of a path");
  options.document.input = std::exchange(options.path, {});
}

int get(const Context& context, const GetOptions& options) {
  XmlDocument document(context);
  if (!document.load(options.document)) return kFailed;
  Session<Zantrel::Xml>& session = document.session();
  const PathParts parts = partsOf(options.path);
  std::string text;
  if (!options.tag.empty()) {
    if (!session.report(document.xml().TagContent(options.tag, text))) return kFailed;
  } else if (parts.wholeElement) {
    if (!goTo(session, parts.element)) return kFailed;
    text = document.xml().GetXml();
  } else if (!session.report(document.xml().ZantrelPath(options.path, text))) {
    return kFailed;
  }
  if (!text.ends_with('\n')) text += '\n';
  return session.write("-", Zantrel::bytesOf(text)) ? kDone : kFailed;
}

// ---- find ----

struct FindOptions {
  DocumentOptions document;
  std::string tag, attribute, content;
  bool hasContent = false;
  bool ignoreCase = false;
  bool count = false;
};

/// Tells elements that have all that is asked for.
class Criteria {
 public:
  explicit Criteria(const FindOptions& options) : options_(options) {
    const std::size_t equals = options.attribute.find('=');
    name_ = options.attribute.substr(0, equals);
    if (equals != std::string::npos) value_ = options.attribute.substr(equals + 1);
  }

  bool match(Zantrel::Xml& element) {
    if (!options_.tag.empty() && options_.tag != "*" && element.get_Tag() != options_.tag)
      return false;
    if (options_.hasContent && !element.ContentMatches(options_.content, !options_.ignoreCase))
      return false;
    return name_.empty() || hasAttribute(element);
  }

 private:
  bool hasAttribute(Zantrel::Xml& element) {
    if (!element.HasAttribute(name_)) return false;
    if (value_ == "*") return true;
    probe_.put_Content(element.GetAttrValue(name_));
    return probe_.ContentMatches(value_, !options_.ignoreCase);
  }

  const FindOptions& options_;
  std::string name_, value_ = "*";
  Zantrel::Xml probe_;  // patterns are matched with content
};

std::string oneLine(std::string text) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
  std::replace_if(text.begin(), text.end(), isControl, ' ');
  return text;
}

int find(const Context& context, const FindOptions& options) {
  XmlDocument document(context);
  if (!document.load(options.document)) return kFailed;
  Criteria criteria(options);
  std::size_t found = 0;
  std::string out;
  for (TreeWalk walk(document.xml()); walk.next();) {
    if (!criteria.match(document.xml())) continue;
    ++found;
    if (options.count) continue;
    out += walk.path();
    out += '\t' + oneLine(document.xml().get_Content()) + '\n';
    constexpr std::size_t kBlock = std::size_t{1} << 16;
    if (out.size() < kBlock) continue;
    if (!document.session().write("-", Zantrel::bytesOf(out))) return kFailed;
    out.clear();
  }
  if (options.count) out = std::to_string(found) + '\n';
  if (!document.session().write("-", Zantrel::bytesOf(out))) return kFailed;
  return found != 0 ? kDone : kFailed;
}

// ---- validate ----

struct ValidateOptions {
  std::vector<std::string> files{"-"};
};

bool canBeRead(const std::string& file) {
  if (isStandardStream(file)) return true;
  std::FILE* const opened = openFile(file, "rb");
  return opened != nullptr && std::fclose(opened) == 0;
}

int validate(const Context& context, const ValidateOptions& options) {
  int status = kDone;
  for (const std::string& file : options.files) {
    XmlDocument document(context);
    const bool valid = document.load({.input = file, .strict = true});
    const char* const verdict = valid             ? "well-formed"
                                : canBeRead(file) ? "not well-formed"
                                                  : "cannot be read";
    std::printf("%s: %s\n", file.c_str(), verdict);
    if (!valid) status = kFailed;
  }
  return status;
}

}  // namespace

void addXmlGet(CLI::App& parent, Context& context) {
  const auto options = std::make_shared<GetOptions>();
  CLI::App* const command = parent.add_subcommand(
      "get", "Show the content or an attribute of an element, or all of it as XML");
  addReading(*command, options->document);
  command->add_option("-t,--tag", options->tag,
                      "Show the content of the first element with this tag, in place of a path");
  command->add_option("path", options->path,
                      "Steps tag, tag[n], [n] or .. with | between them; (name) at the end is an "
                      "attribute, $ the element as XML");
  command->add_option("file", options->document.input, "XML file; - is standard input");
  command->callback([&context, options] {
    arrange(*options);
    context.run = [&context, options] { return get(context, *options); };
  });
}

void addXmlFind(CLI::App& parent, Context& context) {
  const auto options = std::make_shared<FindOptions>();
  CLI::App* const command = parent.add_subcommand(
      "find", "List elements in the order of the document: path and content, a tab between them");
  addReading(*command, options->document);
  command->add_option("-t,--tag", options->tag, "Elements with this tag");
  command->add_option(
      "-a,--attr", options->attribute,
      "Elements with an attribute: NAME, or NAME=PATTERN with * for any characters");
  CLI::Option* const content =
      command->add_option("-c,--content", options->content,
                          "Elements whose content matches a pattern, * being any characters");
  command->add_flag("-i,--ignore-case", options->ignoreCase,
                    "Take upper and lower case for the same in patterns");
  command->add_flag("-n,--count", options->count, "Show only how many there are");
  command->add_option("file", options->document.input, "XML file; - is standard input");
  command->callback([&context, options, content] {
    options->hasContent = content->count() > 0;
    context.run = [&context, options] { return find(context, *options); };
  });
}

void addXmlValidate(CLI::App& parent, Context& context) {
  const auto options = std::make_shared<ValidateOptions>();
  CLI::App* const command =
      parent.add_subcommand("validate", "Tell whether documents are well-formed XML 1.0");
  command->add_option("files", options->files, "XML files; - is standard input");
  command->callback([&context, options] {
    context.run = [&context, options] { return validate(context, *options); };
  });
}

}  // namespace zantrel_cli
