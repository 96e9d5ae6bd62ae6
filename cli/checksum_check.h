#pragma once
// Verifies the files that checksum files list, with the habits of sha256sum --check.

#include <string>
#include <vector>

#include "hasher.h"

namespace zantrel_cli {

struct CheckOptions {
  bool ignoreMissing = false;
  bool quiet = false;   ///< no OK for single files
  bool status = false;  ///< nothing but the exit status
  bool strict = false;  ///< a malformed line is a failure
  bool warn = false;    ///< complains of each malformed line
  bool zeroEnded = false;
  bool keyed = false;
  bool algorithmGiven = false;          ///< lines that name another algorithm are malformed
  std::vector<std::string> algorithms;  ///< those that lines may name
  DigestOptions digest;
};

/// Reads each list, which may be standard input, and writes "file: OK" or "file: FAILED" for each
/// file in it. The exit status: kFailed when a file differs or cannot be read, and when a list has
/// no proper line.
int checkFiles(Hasher& hasher, const std::vector<std::string>& lists, const CheckOptions& options);

}  // namespace zantrel_cli
