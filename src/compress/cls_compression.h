#pragma once

#include <cstdint>

#include "compress/compression_settings.h"
#include "compress/encoded_pieces.h"
#include "compress/text_pieces.h"
#include "compress/zantrel_compress.h"
#include "core/data_buffer.h"
#include "core/encode/cls_encode.h"
#include "core/xstring.h"
#include "frame/component.h"
#include "frame/zantrel_crit_sec.h"

namespace zantrel {

/// Compression in one of several formats: the component behind the public class Compression, which
/// describes its members. Outputs arrive empty. Several threads may use one object.
class ClsCompression final : public Component, public ClsEncode, public ZantrelCritSec {
 public:
  CompressionSettings& settings() { return settings_; }
  ZantrelCritSec* criticalSection() noexcept override { return this; }

  void get_Algorithm(XString& out);
  void put_Algorithm(const XString& name);
  bool put_DeflateLevel(int level);
  bool put_MaxDecompressedSize(std::int64_t bytes);

  // In one piece (cls_compression.cpp)

  bool CompressBytes(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress);
  bool CompressBytesENC(const DataBuffer& in, XString& out, ProgressEvent* progress);
  bool CompressString(const XString& in, DataBuffer& out, ProgressEvent* progress);
  bool CompressStringENC(const XString& in, XString& out, ProgressEvent* progress);
  bool CompressFile(const XString& inPath, const XString& outPath, ProgressEvent* progress);

  bool DecompressBytes(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress);
  bool DecompressBytesENC(const XString& in, DataBuffer& out, ProgressEvent* progress);
  bool DecompressString(const DataBuffer& in, XString& out, ProgressEvent* progress);
  bool DecompressStringENC(const XString& in, XString& out, ProgressEvent* progress);
  bool DecompressFile(const XString& inPath, const XString& outPath, ProgressEvent* progress);

  // In several pieces (cls_compression_streams.cpp)

  bool BeginCompressBytes(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress);
  bool MoreCompressBytes(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress);
  bool EndCompressBytes(DataBuffer& out, ProgressEvent* progress);
  bool BeginCompressString(const XString& in, DataBuffer& out, ProgressEvent* progress);
  bool MoreCompressString(const XString& in, DataBuffer& out, ProgressEvent* progress);
  bool EndCompressString(DataBuffer& out, ProgressEvent* progress);
  bool BeginCompressBytesENC(const DataBuffer& in, XString& out, ProgressEvent* progress);
  bool MoreCompressBytesENC(const DataBuffer& in, XString& out, ProgressEvent* progress);
  bool EndCompressBytesENC(XString& out, ProgressEvent* progress);
  bool BeginCompressStringENC(const XString& in, XString& out, ProgressEvent* progress);
  bool MoreCompressStringENC(const XString& in, XString& out, ProgressEvent* progress);
  bool EndCompressStringENC(XString& out, ProgressEvent* progress);

  bool BeginDecompressBytes(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress);
  bool MoreDecompressBytes(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress);
  bool EndDecompressBytes(DataBuffer& out, ProgressEvent* progress);
  bool BeginDecompressString(const DataBuffer& in, XString& out, ProgressEvent* progress);
  bool MoreDecompressString(const DataBuffer& in, XString& out, ProgressEvent* progress);
  bool EndDecompressString(XString& out, ProgressEvent* progress);
  bool BeginDecompressBytesENC(const XString& in, DataBuffer& out, ProgressEvent* progress);
  bool MoreDecompressBytesENC(const XString& in, DataBuffer& out, ProgressEvent* progress);
  bool EndDecompressBytesENC(DataBuffer& out, ProgressEvent* progress);
  bool BeginDecompressStringENC(const XString& in, XString& out, ProgressEvent* progress);
  bool MoreDecompressStringENC(const XString& in, XString& out, ProgressEvent* progress);
  bool EndDecompressStringENC(XString& out, ProgressEvent* progress);

 private:
  enum class Step : std::uint8_t { Begin, More, End };

  ZantrelCompress& front(MethodCall& call);
  bool compress(MethodCall& call, ByteSpan in, DataBuffer& out);
  bool decompress(MethodCall& call, ByteSpan in, DataBuffer& out);
  template <class Work>
  bool file(MethodCall& call, const XString& inPath, const XString& outPath, const Work& work);
  bool toCharset(MethodCall& call, const XString& text, bool isStart, DataBuffer& out);
  bool encoded(MethodCall& call, const DataBuffer& bytes, XString& out);

  bool compressStep(MethodCall& call, Step step, ByteSpan in, DataBuffer& out);
  bool compressTextStep(MethodCall& call, Step step, const XString& in, DataBuffer& out);
  bool encodedStep(MethodCall& call, Step step, const DataBuffer& bytes, XString& out);
  bool decompressStep(MethodCall& call, Step step, ByteSpan in, DataBuffer& out);
  bool decodedStep(MethodCall& call, Step step, const XString& in, DataBuffer& out);
  bool textStep(MethodCall& call, Step step, const DataBuffer& bytes, XString& out);

  template <class Out, class Body>
  bool run(const char* name, ProgressEvent* progress, Out& out, const Body& body);

  CompressionSettings settings_;
  ZantrelCompress front_;
  EncodedPieces encodedOutput_;
  EncodedPieces encodedInput_;
  TextPieces text_;
};

/// A method whose output is empty unless it succeeds.
template <class Out, class Body>
bool ClsCompression::run(const char* name, ProgressEvent* progress, Out& out, const Body& body) {
  return call(name, progress, [&](MethodCall& c) {
    if (body(c)) return true;
    out.clear();
    return false;
  });
}

}  // namespace zantrel
