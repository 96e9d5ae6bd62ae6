#pragma once

#include "compress/gzip_header.h"

namespace zantrel {

class CompressionEngine;
class DataSink;
class DataSource;
class ProgressMonitor;

/// Writes what a source holds as one gzip member (RFC 1952), in constant memory: the header, the
/// output of `deflate`, which must be an engine of raw deflate, the CRC-32 and the size. The sink
/// is not committed. `progress` may be null.
bool writeGzip(const GzipHeader& header, CompressionEngine& deflate, DataSource& source,
               DataSink& sink, LogBase& log, ProgressMonitor* progress);

}  // namespace zantrel
