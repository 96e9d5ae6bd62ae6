#include "compress/cls_compression.h"

#include <algorithm>

#include "core/charset/charset_request.h"
#include "core/transform_file.h"
#include "frame/text_to_charset.h"

namespace zantrel {

// Settings

void ClsCompression::get_Algorithm(XString& out) {
  out.setFromUtf8(compressionAlgorithmName(front_.algorithm()));
}

void ClsCompression::put_Algorithm(const XString& name) {
  front_.setAlgorithm(compressionAlgorithmOf(name.utf8()));
}

bool ClsCompression::put_DeflateLevel(int level) {
  const bool known = level >= 0 && level <= 9;
  if (known) {
    settings_.deflateLevel = level;
  } else {
    log().logError("The level of deflate is a number from 0 to 9.");
  }
  return known;
}

bool ClsCompression::put_MaxDecompressedSize(std::int64_t bytes) {
  if (bytes >= 0) {
    settings_.maxDecompressedSize = bytes;
  } else {
    log().logError("A size cannot be negative.");
  }
  return bytes >= 0;
}

/// The front as the settings are now.
ZantrelCompress& ClsCompression::front(MethodCall& call) {
  front_.setDeflateLevel(settings_.deflateLevel);
  front_.setMaxDecompressedSize(static_cast<std::uint64_t>(settings_.maxDecompressedSize));
  front_.setTrace(call.verbose());
  if (call.verbose()) {
    XString name;
    get_Algorithm(name);
    call.log().logDataStr("algorithm", name);
  }
  return front_;
}

// Steps that the methods are made of

bool ClsCompression::toCharset(MethodCall& call, const XString& text, bool isStart,
                               DataBuffer& out) {
  CharsetRequest charset = CharsetRequest::parse(settings_.charset.utf8());
  charset.byteOrderMark = charset.byteOrderMark && isStart;
  return textToCharset(text, charset, CharsetOrigin::CharsetProperty, out, call.log());
}

bool ClsCompression::encoded(MethodCall& call, const DataBuffer& bytes, XString& out) {
  if (encodingMode() == EncodingMode::Html) {
    call.log().logInfo("The encoding html encodes nothing: the result is empty.");
  }
  return encodeInMode(bytes, out);
}

bool ClsCompression::compress(MethodCall& call, ByteSpan in, DataBuffer& out) {
  ProgressMonitor& progress = call.startProgress(static_cast<std::int64_t>(in.size()));
  return front(call).compress(in, out, call.log(), &progress);
}

bool ClsCompression::decompress(MethodCall& call, ByteSpan in, DataBuffer& out) {
  ProgressMonitor& progress = call.startProgress(static_cast<std::int64_t>(in.size()));
  return front(call).decompress(in, out, call.log(), &progress);
}

template <class Work>
bool ClsCompression::file(MethodCall& call, const XString& inPath, const XString& outPath,
                          const Work& work) {
  return transformFile(inPath, outPath, call.log(), [&](DataSource& in, DataSink& out) {
    return work(in, out, call.startProgress(std::max<std::int64_t>(in.size(), 0)));
  });
}

// Compression

bool ClsCompression::CompressBytes(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress) {
  return run("CompressBytes", progress, out,
             [&](MethodCall& c) { return compress(c, in.bytes(), out); });
}

bool ClsCompression::CompressBytesENC(const DataBuffer& in, XString& out, ProgressEvent* progress) {
  return run("CompressBytesENC", progress, out, [&](MethodCall& c) {
    DataBuffer bytes;
    return compress(c, in.bytes(), bytes) && encoded(c, bytes, out);
  });
}

bool ClsCompression::CompressString(const XString& in, DataBuffer& out, ProgressEvent* progress) {
  return run("CompressString", progress, out, [&](MethodCall& c) {
    DataBuffer text;
    return toCharset(c, in, true, text) && compress(c, text.bytes(), out);
  });
}

bool ClsCompression::CompressStringENC(const XString& in, XString& out, ProgressEvent* progress) {
  return run("CompressStringENC", progress, out, [&](MethodCall& c) {
    DataBuffer text, bytes;
    return toCharset(c, in, true, text) && compress(c, text.bytes(), bytes) &&
           encoded(c, bytes, out);
  });
}

bool ClsCompression::CompressFile(const XString& inPath, const XString& outPath,
                                  ProgressEvent* progress) {
  return call("CompressFile", progress, [&](MethodCall& c) {
    return file(c, inPath, outPath, [&](DataSource& in, DataSink& out, ProgressMonitor& monitor) {
      return front(c).compress(in, out, c.log(), &monitor);
    });
  });
}

// Expansion

bool ClsCompression::DecompressBytes(const DataBuffer& in, DataBuffer& out,
                                     ProgressEvent* progress) {
  return run("DecompressBytes", progress, out,
             [&](MethodCall& c) { return decompress(c, in.bytes(), out); });
}

bool ClsCompression::DecompressBytesENC(const XString& in, DataBuffer& out,
                                        ProgressEvent* progress) {
  return run("DecompressBytesENC", progress, out, [&](MethodCall& c) {
    DataBuffer bytes;
    return decodeInMode(in, bytes) && decompress(c, bytes.bytes(), out);
  });
}

bool ClsCompression::DecompressString(const DataBuffer& in, XString& out, ProgressEvent* progress) {
  return run("DecompressString", progress, out, [&](MethodCall& c) {
    DataBuffer text;
    return decompress(c, in.bytes(), text) &&
           textOfBytes(text.bytes(), settings_.charset.utf8(), out, c.log());
  });
}

bool ClsCompression::DecompressStringENC(const XString& in, XString& out, ProgressEvent* progress) {
  return run("DecompressStringENC", progress, out, [&](MethodCall& c) {
    DataBuffer bytes, text;
    return decodeInMode(in, bytes) && decompress(c, bytes.bytes(), text) &&
           textOfBytes(text.bytes(), settings_.charset.utf8(), out, c.log());
  });
}

bool ClsCompression::DecompressFile(const XString& inPath, const XString& outPath,
                                    ProgressEvent* progress) {
  return call("DecompressFile", progress, [&](MethodCall& c) {
    return file(c, inPath, outPath, [&](DataSource& in, DataSink& out, ProgressMonitor& monitor) {
      return front(c).decompress(in, out, c.log(), &monitor);
    });
  });
}

}  // namespace zantrel
