// The members of ClsGzip that expand.

#include <algorithm>
#include <string_view>

#include "compress/cls_gzip.h"
#include "compress/gzip_reader.h"
#include "compress/tar_unpacker.h"
#include "compress/text_pieces.h"
#include "compress/xfdl.h"
#include "core/charset/utf8_utf16.h"
#include "core/encode/cls_encode.h"
#include "core/transform_file.h"
#include "platform/local_time.h"

namespace zantrel {
namespace {

constexpr const char* kUnTarPrefix = "(unTarGz) ";

/// Takes what is written without keeping it.
class NullDataSink final : public DataSink {
 protected:
  bool doWrite(ByteSpan, LogBase&) override { return true; }
};

/// Text of a header: UTF-8 as we write it or, as the standard has it, Latin-1.
void setHeaderText(const std::string& bytes, XString& out) {
  out.clear();
  out.appendFromEncoding(asBytes(bytes), isValidUtf8(asBytes(bytes)) ? "utf-8" : "iso-8859-1");
}

}  // namespace

void ClsGzip::setUp(MethodCall& call, GzipReader& reader) const {
  reader.setTrace(call.verbose());
  reader.setLogHeaders(call.verbose());
  reader.setMaxDecompressedSize(static_cast<std::uint64_t>(settings_.maxDecompressedSize));
}

bool ClsGzip::expand(MethodCall& call, DataSource& in, DataSink& out) {
  ProgressMonitor& progress = call.startProgress(std::max<std::int64_t>(in.size(), 0));
  GzipReader reader(in, call.log(), &progress);
  setUp(call, reader);
  return reader.decompress(out);
}

bool ClsGzip::expandFile(MethodCall& call, const XString& inPath, DataSink& out) {
  FileDataSource in;
  return in.open(inPath.getUtf8(), call.log()) && expand(call, in, out) && out.commit(call.log());
}

bool ClsGzip::UncompressFile(const XString& inPath, const XString& outPath,
                             ProgressEvent* progress) {
  return call("UncompressFile", progress, [&](MethodCall& c) {
    return transformFile(inPath, outPath, c.log(),
                         [&](DataSource& in, DataSink& out) { return expand(c, in, out); });
  });
}

bool ClsGzip::UncompressFileToMem(const XString& inPath, DataBuffer& out, ProgressEvent* progress) {
  return call("UncompressFileToMem", progress, [&](MethodCall& c) {
    BufferDataSink sink(out);
    const bool done = expandFile(c, inPath, sink);
    if (!done) out.clear();
    return done;
  });
}

bool ClsGzip::UncompressFileToString(const XString& inPath, const XString& charset, XString& out,
                                     ProgressEvent* progress) {
  return call("UncompressFileToString", progress, [&](MethodCall& c) {
    DataBuffer bytes;
    BufferDataSink sink(bytes);
    return expandFile(c, inPath, sink) && textOfBytes(bytes.bytes(), charset.utf8(), out, c.log());
  });
}

bool ClsGzip::UncompressMemory(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress) {
  return call("UncompressMemory", progress, [&](MethodCall& c) {
    MemoryDataSource source(in.bytes());
    BufferDataSink sink(out);
    const bool done = expand(c, source, sink) && sink.commit(c.log());
    if (!done) out.clear();
    return done;
  });
}

bool ClsGzip::UncompressMemToFile(const DataBuffer& in, const XString& outPath,
                                  ProgressEvent* progress) {
  return call("UncompressMemToFile", progress, [&](MethodCall& c) {
    MemoryDataSource source(in.bytes());
    FileDataSink out;
    return out.open(outPath.getUtf8(), c.log()) && expand(c, source, out) && out.commit(c.log());
  });
}

bool ClsGzip::UncompressString(const DataBuffer& in, const XString& charset, XString& out,
                               ProgressEvent* progress) {
  return call("UncompressString", progress, [&](MethodCall& c) {
    MemoryDataSource source(in.bytes());
    DataBuffer bytes;
    BufferDataSink sink(bytes);
    return expand(c, source, sink) && sink.commit(c.log()) &&
           textOfBytes(bytes.bytes(), charset.utf8(), out, c.log());
  });
}

bool ClsGzip::InflateStringENC(const XString& in, const XString& charset, const XString& encoding,
                               XString& out) {
  return call("InflateStringENC", [&](MethodCall& c) {
    DataBuffer bytes, text;
    deflate_.setTrace(c.verbose());
    deflate_.setMaxDecompressedSize(static_cast<std::uint64_t>(settings_.maxDecompressedSize));
    return ClsEncode().Decode(in, encoding, bytes, false) &&
           deflate_.inflateBuffer(bytes.bytes(), text, c.log()) &&
           textOfBytes(text.bytes(), charset.utf8(), out, c.log());
  });
}

bool ClsGzip::examine(MethodCall& call, DataSource& in) {
  ProgressMonitor& progress = call.startProgress(std::max<std::int64_t>(in.size(), 0));
  GzipReader reader(in, call.log(), &progress);
  setUp(call, reader);
  reader.setLogHeaders(true);
  NullDataSink nowhere;
  const bool whole = reader.decompress(nowhere);
  if (reader.headerCount() == 0) return false;
  const GzipHeader& header = reader.firstHeader();
  setHeaderText(header.name, settings_.filename);
  setHeaderText(header.comment, settings_.comment);
  settings_.extraData = header.extra;
  localLastMod_ = header.modified != 0 ? localFromSeconds(header.modified) : SystemTime();
  localLastMod_.dayOfWeek = 0;
  if (!whole) return false;
  progress.progressInfo64("numMembers", reader.memberCount());
  progress.progressInfo64("uncompressedSize", static_cast<std::int64_t>(reader.totalSize()));
  call.log().logData64("numMembers", reader.memberCount());
  return true;
}

bool ClsGzip::ExamineFile(const XString& inPath, ProgressEvent* progress) {
  return call("ExamineFile", progress, [&](MethodCall& c) {
    FileDataSource in;
    return in.open(inPath.getUtf8(), c.log()) && examine(c, in);
  });
}

bool ClsGzip::ExamineMemory(const DataBuffer& in, ProgressEvent* progress) {
  return call("ExamineMemory", progress, [&](MethodCall& c) {
    MemoryDataSource source(in.bytes());
    return examine(c, source);
  });
}

bool ClsGzip::UnTarGz(const XString& inPath, const XString& outFolder, ProgressEvent* progress) {
  return call("UnTarGz", progress, [&](MethodCall& c) {
    FileDataSource in;
    if (!in.open(inPath.getUtf8(), c.log())) return false;
    ProgressMonitor& monitor = c.startProgress(std::max<std::int64_t>(in.size(), 0));
    GzipReader reader(in, c.log(), &monitor, kUnTarPrefix);
    setUp(c, reader);
    TarUnpacker unpacker(outFolder.getUtf8(), c.log(), kUnTarPrefix);
    TarReader archive(unpacker);
    const bool read =
        unpacker.makeTarget() && reader.decompress(archive) && archive.finish(c.log());
    const bool unpacked = unpacker.finish();
    c.log().logData64("numEntries", unpacker.entryCount());
    return read && unpacked;
  });
}

bool ClsGzip::XfdlToXml(const XString& xfdl, XString& out) {
  return call("XfdlToXml", [&](MethodCall& c) {
    bool isXml = false;
    DataBuffer gzip, xml;
    if (!readXfdl(xfdl.utf8(), isXml, gzip, c.log())) return false;
    if (isXml) {
      out = xfdl;
      return true;
    }
    MemoryDataSource source(gzip.bytes());
    BufferDataSink sink(xml);
    if (!expand(c, source, sink) || !sink.commit(c.log())) return false;
    StringBuffer charset;
    xml.getXmlCharset(charset);
    return textOfBytes(xml.bytes(), charset.view(), out, c.log());
  });
}

}  // namespace zantrel
