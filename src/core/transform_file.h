#pragma once

#include "core/data_sink.h"
#include "core/data_source.h"
#include "core/xstring.h"

namespace zantrel {

/// Gives a file the content that `work` makes of another one's, or of its own old one: calls
/// work(DataSource&, DataSink&) and commits when that succeeds. The input is closed before, since a
/// file that is open cannot be replaced everywhere.
template <class Work>
bool transformFile(const XString& inPath, const XString& outPath, LogBase& log, const Work& work) {
  FileDataSink out;
  const auto fill = [&] {
    FileDataSource in;
    return in.open(inPath.getUtf8(), log) && out.open(outPath.getUtf8(), log) && work(in, out);
  };
  return fill() && out.commit(log);
}

}  // namespace zantrel
