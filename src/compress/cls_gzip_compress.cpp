// The members of ClsGzip that compress.

#include <algorithm>
#include <limits>
#include <string_view>

#include "compress/cls_gzip.h"
#include "compress/gzip_writer.h"
#include "core/calendar.h"
#include "core/charset/charset_request.h"
#include "core/encode/cls_encode.h"
#include "core/transform_file.h"
#include "frame/text_to_charset.h"
#include "platform/file_tree.h"
#include "platform/local_time.h"

namespace zantrel {
namespace {

std::int64_t secondsOf(const SystemTime& utc) {
  return daysFromDate(utc.year, utc.month, utc.day) * 86400 + utc.hour * 3600 + utc.minute * 60 +
         utc.second;
}

bool toCharset(MethodCall& call, const XString& text, const XString& charset, DataBuffer& out) {
  const std::string_view name = charset.isEmpty() ? "utf-8" : charset.utf8();
  return textToCharset(text, CharsetRequest::parse(name), CharsetOrigin::Argument, out, call.log());
}

}  // namespace

/// The header as the settings ask for it; its time is that of the file, if there is one.
bool ClsGzip::fillHeader(MethodCall& call, const XString* inPath, const XString& name,
                         GzipHeader& header) {
  header.name = name.utf8();
  header.comment = settings_.comment.utf8();
  if (!header.extra.append(settings_.extraData)) {
    call.log().logError("Out of memory.");
    return false;
  }
  std::int64_t seconds = 0;
  if (settings_.useCurrentDate) {
    seconds = secondsOf(systemClock().utcTime());
  } else if (localLastMod_ != SystemTime()) {
    seconds = secondsFromLocal(localLastMod_);
  } else if (inPath != nullptr && fileTime(inPath->getUtf8(), seconds) != 0) {
    seconds = 0;
  }
  // The field ends in 2106, and 0 in it means that there is no time.
  if (seconds > 0 && seconds <= std::numeric_limits<std::uint32_t>::max()) {
    header.modified = static_cast<std::uint32_t>(seconds);
  } else {
    call.log().logInfo("Not including file last-mod time in Gzip");
  }
  return true;
}

bool ClsGzip::compress(MethodCall& call, const GzipHeader& header, DataSource& in, DataSink& out) {
  deflate_.setLevel(settings_.deflateLevel);
  ProgressMonitor& progress = call.startProgress(std::max<std::int64_t>(in.size(), 0));
  return writeGzip(header, deflate_, in, out, call.log(), &progress);
}

bool ClsGzip::compressMemory(MethodCall& call, ByteSpan in, DataSink& out) {
  GzipHeader header;
  MemoryDataSource source(in);
  return fillHeader(call, nullptr, settings_.filename, header) &&
         compress(call, header, source, out) && out.commit(call.log());
}

bool ClsGzip::compressFile(const char* method, const XString& inPath, const XString& name,
                           const XString& outPath, ProgressEvent* progress) {
  return call(method, progress, [&](MethodCall& c) {
    return transformFile(inPath, outPath, c.log(), [&](DataSource& in, DataSink& out) {
      GzipHeader header;
      return fillHeader(c, &inPath, name, header) && compress(c, header, in, out);
    });
  });
}

bool ClsGzip::CompressFile(const XString& inPath, const XString& outPath, ProgressEvent* progress) {
  return compressFile("CompressFile", inPath, settings_.filename, outPath, progress);
}

bool ClsGzip::CompressFile2(const XString& inPath, const XString& embeddedName,
                            const XString& outPath, ProgressEvent* progress) {
  return compressFile("CompressFile2", inPath, embeddedName, outPath, progress);
}

bool ClsGzip::CompressFileToMem(const XString& inPath, DataBuffer& out, ProgressEvent* progress) {
  return call("CompressFileToMem", progress, [&](MethodCall& c) {
    GzipHeader header;
    FileDataSource in;
    BufferDataSink sink(out);
    const bool done = in.open(inPath.getUtf8(), c.log()) &&
                      fillHeader(c, &inPath, settings_.filename, header) &&
                      compress(c, header, in, sink) && sink.commit(c.log());
    if (!done) out.clear();
    return done;
  });
}

bool ClsGzip::CompressMemory(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress) {
  return call("CompressMemory", progress, [&](MethodCall& c) {
    BufferDataSink sink(out);
    const bool done = compressMemory(c, in.bytes(), sink);
    if (!done) out.clear();
    return done;
  });
}

bool ClsGzip::CompressString(const XString& in, const XString& charset, DataBuffer& out,
                             ProgressEvent* progress) {
  return call("CompressString", progress, [&](MethodCall& c) {
    DataBuffer text;
    BufferDataSink sink(out);
    const bool done = toCharset(c, in, charset, text) && compressMemory(c, text.bytes(), sink);
    if (!done) out.clear();
    return done;
  });
}

bool ClsGzip::CompressStringToFile(const XString& in, const XString& charset,
                                   const XString& outPath, ProgressEvent* progress) {
  return call("CompressStringToFile", progress, [&](MethodCall& c) {
    DataBuffer text;
    FileDataSink out;
    return toCharset(c, in, charset, text) && out.open(outPath.getUtf8(), c.log()) &&
           compressMemory(c, text.bytes(), out);
  });
}

bool ClsGzip::DeflateStringENC(const XString& in, const XString& charset, const XString& encoding,
                               XString& out) {
  return call("DeflateStringENC", [&](MethodCall& c) {
    DataBuffer text, bytes;
    deflate_.setLevel(settings_.deflateLevel);
    return toCharset(c, in, charset, text) &&
           deflate_.deflateBuffer(text.bytes(), bytes, c.log()) &&
           ClsEncode().Encode(bytes, encoding, out, false);
  });
}

}  // namespace zantrel
