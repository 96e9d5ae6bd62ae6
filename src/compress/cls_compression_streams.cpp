// The members of ClsCompression that work in several pieces.

#include "compress/cls_compression.h"

namespace zantrel {

// Compression

bool ClsCompression::compressStep(MethodCall& call, Step step, ByteSpan in, DataBuffer& out) {
  ProgressMonitor& progress = call.startProgress(static_cast<std::int64_t>(in.size()));
  switch (step) {
    case Step::Begin:
      encodedOutput_.restart();
      return front(call).beginCompress(in, out, call.log(), &progress);
    case Step::More:
      return front_.moreCompress(in, out, call.log(), &progress);
    case Step::End:
      return front_.endCompress(out, call.log(), &progress);
  }
  return false;
}

bool ClsCompression::compressTextStep(MethodCall& call, Step step, const XString& in,
                                      DataBuffer& out) {
  DataBuffer text;
  return toCharset(call, in, step == Step::Begin, text) &&
         compressStep(call, step, text.bytes(), out);
}

bool ClsCompression::encodedStep(MethodCall& call, Step step, const DataBuffer& bytes,
                                 XString& out) {
  if (encodedOutput_.encode(bytes.bytes(), step == Step::End, *this, out)) return true;
  call.log().logError("Out of memory.");
  return false;
}

bool ClsCompression::BeginCompressBytes(const DataBuffer& in, DataBuffer& out,
                                        ProgressEvent* progress) {
  return run("BeginCompressBytes", progress, out,
             [&](MethodCall& c) { return compressStep(c, Step::Begin, in.bytes(), out); });
}

bool ClsCompression::MoreCompressBytes(const DataBuffer& in, DataBuffer& out,
                                       ProgressEvent* progress) {
  return run("MoreCompressBytes", progress, out,
             [&](MethodCall& c) { return compressStep(c, Step::More, in.bytes(), out); });
}

bool ClsCompression::EndCompressBytes(DataBuffer& out, ProgressEvent* progress) {
  return run("EndCompressBytes", progress, out,
             [&](MethodCall& c) { return compressStep(c, Step::End, {}, out); });
}

bool ClsCompression::BeginCompressString(const XString& in, DataBuffer& out,
                                         ProgressEvent* progress) {
  return run("BeginCompressString", progress, out,
             [&](MethodCall& c) { return compressTextStep(c, Step::Begin, in, out); });
}

bool ClsCompression::MoreCompressString(const XString& in, DataBuffer& out,
                                        ProgressEvent* progress) {
  return run("MoreCompressString", progress, out,
             [&](MethodCall& c) { return compressTextStep(c, Step::More, in, out); });
}

bool ClsCompression::EndCompressString(DataBuffer& out, ProgressEvent* progress) {
  return run("EndCompressString", progress, out,
             [&](MethodCall& c) { return compressStep(c, Step::End, {}, out); });
}

bool ClsCompression::BeginCompressBytesENC(const DataBuffer& in, XString& out,
                                           ProgressEvent* progress) {
  return run("BeginCompressBytesENC", progress, out, [&](MethodCall& c) {
    DataBuffer bytes;
    return compressStep(c, Step::Begin, in.bytes(), bytes) &&
           encodedStep(c, Step::Begin, bytes, out);
  });
}

bool ClsCompression::MoreCompressBytesENC(const DataBuffer& in, XString& out,
                                          ProgressEvent* progress) {
  return run("MoreCompressBytesENC", progress, out, [&](MethodCall& c) {
    DataBuffer bytes;
    return compressStep(c, Step::More, in.bytes(), bytes) && encodedStep(c, Step::More, bytes, out);
  });
}

bool ClsCompression::EndCompressBytesENC(XString& out, ProgressEvent* progress) {
  return run("EndCompressBytesENC", progress, out, [&](MethodCall& c) {
    DataBuffer bytes;
    return compressStep(c, Step::End, {}, bytes) && encodedStep(c, Step::End, bytes, out);
  });
}

bool ClsCompression::BeginCompressStringENC(const XString& in, XString& out,
                                            ProgressEvent* progress) {
  return run("BeginCompressStringENC", progress, out, [&](MethodCall& c) {
    DataBuffer bytes;
    return compressTextStep(c, Step::Begin, in, bytes) && encodedStep(c, Step::Begin, bytes, out);
  });
}

bool ClsCompression::MoreCompressStringENC(const XString& in, XString& out,
                                           ProgressEvent* progress) {
  return run("MoreCompressStringENC", progress, out, [&](MethodCall& c) {
    DataBuffer bytes;
    return compressTextStep(c, Step::More, in, bytes) && encodedStep(c, Step::More, bytes, out);
  });
}

bool ClsCompression::EndCompressStringENC(XString& out, ProgressEvent* progress) {
  return run("EndCompressStringENC", progress, out, [&](MethodCall& c) {
    DataBuffer bytes;
    return compressStep(c, Step::End, {}, bytes) && encodedStep(c, Step::End, bytes, out);
  });
}

// Expansion

bool ClsCompression::decompressStep(MethodCall& call, Step step, ByteSpan in, DataBuffer& out) {
  ProgressMonitor& progress = call.startProgress(static_cast<std::int64_t>(in.size()));
  switch (step) {
    case Step::Begin:
      return front(call).beginDecompress(in, out, call.log(), &progress);
    case Step::More:
      return front_.moreDecompress(in, out, call.log(), &progress);
    case Step::End:
      return front_.endDecompress(out, call.log(), &progress);
  }
  return false;
}

/// Decodes a piece of encoded input and expands it.
bool ClsCompression::decodedStep(MethodCall& call, Step step, const XString& in, DataBuffer& out) {
  if (step == Step::Begin) encodedInput_.restart();
  DataBuffer bytes;
  if (!encodedInput_.decode(in.utf8(), step == Step::End, *this, bytes)) {
    call.log().logError("Out of memory.");
    return false;
  }
  if (step != Step::End) return decompressStep(call, step, bytes.bytes(), out);
  // What waited for the end is input still.
  return (bytes.getSize() == 0 || decompressStep(call, Step::More, bytes.bytes(), out)) &&
         decompressStep(call, Step::End, {}, out);
}

bool ClsCompression::textStep(MethodCall& call, Step step, const DataBuffer& bytes, XString& out) {
  if (step == Step::Begin && !text_.start(settings_.charset.utf8(), call.log())) return false;
  return text_.add(bytes.bytes(), step == Step::End, out, call.log());
}

bool ClsCompression::BeginDecompressBytes(const DataBuffer& in, DataBuffer& out,
                                          ProgressEvent* progress) {
  return run("BeginDecompressBytes", progress, out,
             [&](MethodCall& c) { return decompressStep(c, Step::Begin, in.bytes(), out); });
}

bool ClsCompression::MoreDecompressBytes(const DataBuffer& in, DataBuffer& out,
                                         ProgressEvent* progress) {
  return run("MoreDecompressBytes", progress, out,
             [&](MethodCall& c) { return decompressStep(c, Step::More, in.bytes(), out); });
}

bool ClsCompression::EndDecompressBytes(DataBuffer& out, ProgressEvent* progress) {
  return run("EndDecompressBytes", progress, out,
             [&](MethodCall& c) { return decompressStep(c, Step::End, {}, out); });
}

bool ClsCompression::BeginDecompressString(const DataBuffer& in, XString& out,
                                           ProgressEvent* progress) {
  return run("BeginDecompressString", progress, out, [&](MethodCall& c) {
    DataBuffer bytes;
    return decompressStep(c, Step::Begin, in.bytes(), bytes) &&
           textStep(c, Step::Begin, bytes, out);
  });
}

bool ClsCompression::MoreDecompressString(const DataBuffer& in, XString& out,
                                          ProgressEvent* progress) {
  return run("MoreDecompressString", progress, out, [&](MethodCall& c) {
    DataBuffer bytes;
    return decompressStep(c, Step::More, in.bytes(), bytes) && textStep(c, Step::More, bytes, out);
  });
}

bool ClsCompression::EndDecompressString(XString& out, ProgressEvent* progress) {
  return run("EndDecompressString", progress, out, [&](MethodCall& c) {
    DataBuffer bytes;
    return decompressStep(c, Step::End, {}, bytes) && textStep(c, Step::End, bytes, out);
  });
}

bool ClsCompression::BeginDecompressBytesENC(const XString& in, DataBuffer& out,
                                             ProgressEvent* progress) {
  return run("BeginDecompressBytesENC", progress, out,
             [&](MethodCall& c) { return decodedStep(c, Step::Begin, in, out); });
}

bool ClsCompression::MoreDecompressBytesENC(const XString& in, DataBuffer& out,
                                            ProgressEvent* progress) {
  return run("MoreDecompressBytesENC", progress, out,
             [&](MethodCall& c) { return decodedStep(c, Step::More, in, out); });
}

bool ClsCompression::EndDecompressBytesENC(DataBuffer& out, ProgressEvent* progress) {
  return run("EndDecompressBytesENC", progress, out,
             [&](MethodCall& c) { return decodedStep(c, Step::End, XString(), out); });
}

bool ClsCompression::BeginDecompressStringENC(const XString& in, XString& out,
                                              ProgressEvent* progress) {
  return run("BeginDecompressStringENC", progress, out, [&](MethodCall& c) {
    DataBuffer bytes;
    return decodedStep(c, Step::Begin, in, bytes) && textStep(c, Step::Begin, bytes, out);
  });
}

bool ClsCompression::MoreDecompressStringENC(const XString& in, XString& out,
                                             ProgressEvent* progress) {
  return run("MoreDecompressStringENC", progress, out, [&](MethodCall& c) {
    DataBuffer bytes;
    return decodedStep(c, Step::More, in, bytes) && textStep(c, Step::More, bytes, out);
  });
}

bool ClsCompression::EndDecompressStringENC(XString& out, ProgressEvent* progress) {
  return run("EndDecompressStringENC", progress, out, [&](MethodCall& c) {
    DataBuffer bytes;
    return decodedStep(c, Step::End, XString(), bytes) && textStep(c, Step::End, bytes, out);
  });
}

}  // namespace zantrel
