#pragma once

#include "crypto/cipher_stream.h"

namespace zantrel {

class DataSink;
class DataSource;
class LogBase;
class ProgressMonitor;
struct CryptChoice;

/// Encrypts or decrypts all that a source yields, in pieces and constant memory; the result is that
/// of the whole at once. False, the reason being logged, when reading or writing failed, the data
/// are no encrypted data, or the monitor asked to stop; the sink is then not to be committed.
bool cryptSource(const CryptChoice& choice, CipherDirection direction, DataSource& source,
                 DataSink& sink, ProgressMonitor& progress, LogBase& log);

}  // namespace zantrel
