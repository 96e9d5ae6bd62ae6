#pragma once
// The sub-commands of zantrel xml.

#include "commands.h"

namespace zantrel_cli {

void addXmlFormat(CLI::App& parent, Context& context);
void addXmlGet(CLI::App& parent, Context& context);
void addXmlSet(CLI::App& parent, Context& context);
void addXmlFind(CLI::App& parent, Context& context);
void addXmlSort(CLI::App& parent, Context& context);
void addXmlValidate(CLI::App& parent, Context& context);

}  // namespace zantrel_cli
