// zantrel: the library's components at work on files. Written against the public headers only.

#include <CLI/CLI.hpp>

#include <algorithm>

#include "commands.h"
#include "console.h"
#include "xml_commands.h"

namespace {

void addCharset(CLI::App& app, zantrel_cli::Context& context) {
  CLI::App* charset = app.add_subcommand("charset", "Convert, verify and list character sets");
  charset->require_subcommand(1);
  zantrel_cli::addCharsetConvert(*charset, context);
  zantrel_cli::addCharsetVerify(*charset, context);
  zantrel_cli::addCharsetList(*charset, context);
  zantrel_cli::addCharsetHtml(*charset, context);
}

void addXml(CLI::App& app, zantrel_cli::Context& context) {
  CLI::App* xml = app.add_subcommand("xml", "Indent, edit, search and check XML documents");
  xml->require_subcommand(1);
  zantrel_cli::addXmlFormat(*xml, context);
  zantrel_cli::addXmlGet(*xml, context);
  zantrel_cli::addXmlSet(*xml, context);
  zantrel_cli::addXmlFind(*xml, context);
  zantrel_cli::addXmlSort(*xml, context);
  zantrel_cli::addXmlValidate(*xml, context);
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> arguments = zantrel_cli::openConsole(argc, argv);
  CLI::App app("Works on files and streams with the components of the Zantrel library.", "zantrel");
  app.set_version_flag("--version", "zantrel " ZANTREL_PACKAGE_VERSION);
  app.require_subcommand(1);
  app.fallthrough();
  app.footer(
      "Exit status: 0 done, 1 failed (the activity log on standard error says why), 2 usage.");

  zantrel_cli::Context context;
  app.add_flag("--log", context.log, "Show the activity log on standard error");
  app.add_flag("--verbose", context.verbose, "Put more detail into the activity log");
  app.add_flag("--no-progress", context.noProgress, "Show no progress bar");
  addCharset(app, context);
  zantrel_cli::addEncode(app, context);
  zantrel_cli::addDecode(app, context);
  zantrel_cli::addHash(app, context);
  zantrel_cli::addHmac(app, context);
  zantrel_cli::addEncrypt(app, context);
  zantrel_cli::addDecrypt(app, context);
  zantrel_cli::addRandom(app, context);
  zantrel_cli::addDeriveKey(app, context);
  zantrel_cli::addGzip(app, context);
  zantrel_cli::addGunzip(app, context);
  zantrel_cli::addCompress(app, context);
  zantrel_cli::addDecompress(app, context);
  zantrel_cli::addUntargz(app, context);
  addXml(app, context);
  zantrel_cli::addCompletion(app, context);

  try {
    std::reverse(arguments.begin(), arguments.end());
    if (!arguments.empty()) arguments.pop_back();  // the program's name
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? zantrel_cli::kDone : zantrel_cli::kUsage;
  }
  return context.run();
}
