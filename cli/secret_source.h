#pragma once
// Where keys and passwords come from: a file, the environment or a prompt, and only if the user
// insists the command line, which every user of the machine can read.

#include <zantrel/types.h>

#include <string>

#include "session.h"

namespace zantrel_cli {

struct SecretOptions {
  std::string what;      ///< "key", "password": names the options and the complaints
  std::string file;      ///< --<what>-file
  std::string variable;  ///< --<what>-env
  bool prompt = false;   ///< --<what>-prompt, and what happens when nothing is given
  std::string argument;  ///< --insecure-<what>
  std::string encoding;  ///< --<what>-encoding; empty where the bytes are the secret itself
  bool isLine = false;   ///< a line end behind it in the file does not belong to it
};

/// Registers the options for options.what; they exclude each other.
void addSecretOptions(CLI::App& command, SecretOptions& options);

/// Whether the user said where the secret is. If not, readSecret() asks for it.
bool isSecretGiven(const SecretOptions& options);

/// Gets the secret; false, after a complaint, when there is none or it is empty.
bool readSecret(Streams& streams, const SecretOptions& options, Zantrel::Bytes& out);

}  // namespace zantrel_cli
