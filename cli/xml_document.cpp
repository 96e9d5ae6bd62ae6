#include "xml_document.h"

#include <CLI/CLI.hpp>

#include "console.h"
#include "temporary_file.h"

namespace zantrel_cli {

void addReading(CLI::App& command, DocumentOptions& options) {
  command.add_flag("--strict", options.strict, "Refuse a document that is not well-formed");
  command.add_flag("--keep-space", options.keepSpace,
                   "Keep white space around text, which is dropped otherwise");
}

bool XmlDocument::load(const DocumentOptions& options) {
  xml().put_RequireWellFormed(options.strict);
  const Progress progress(xml(), context_);
  const auto loadFile = [&](const std::string& path) {
    return session_.report(xml().LoadXmlFile2(path, !options.keepSpace));
  };
  if (!isStandardStream(options.input)) return loadFile(options.input);
  // Files are where the library finds out about charsets.
  TemporaryFile copy;
  if (!copy.create()) return session_.complain("there is no place for a temporary file");
  bool stored = true;
  const bool read =
      readStandardInput([&](Zantrel::ByteView block) { return stored = copy.append(block); });
  if (!read && stored) return session_.complain("standard input cannot be read");
  if (!stored || !copy.finish())
    return session_.complain("a temporary file cannot be written: " + copy.path());
  return loadFile(copy.path());
}

bool XmlDocument::save(const std::string& output) {
  const Progress progress(xml(), context_);
  if (!session_.report(xml().GetRoot2())) return false;
  if (!isStandardStream(output)) return session_.report(xml().SaveXml(output));
  TemporaryFile copy;
  if (!copy.create()) return session_.complain("there is no place for a temporary file");
  if (!session_.report(xml().SaveXml(copy.path()))) return false;
  return copy.copyToStandardOutput() || session_.complain("standard output cannot be written");
}

}  // namespace zantrel_cli
