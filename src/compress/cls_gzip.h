#pragma once

#include <cstdint>

#include "compress/gzip_settings.h"
#include "compress/zantrel_deflate.h"
#include "core/data_buffer.h"
#include "core/xstring.h"
#include "frame/component.h"
#include "frame/zantrel_crit_sec.h"
#include "platform/clock.h"

namespace zantrel {

class DataSink;
class DataSource;
class GzipReader;
struct GzipHeader;

/// gzip files and data: the component behind the public class Gzip, which describes its members.
/// Outputs arrive empty. Several threads may use one object.
class ClsGzip final : public Component, public ZantrelCritSec {
 public:
  GzipSettings& settings() { return settings_; }
  ZantrelCritSec* criticalSection() noexcept override { return this; }

  void get_LocalLastMod(SystemTime& out) { out = localLastMod_; }
  bool put_LocalLastMod(const SystemTime& local);
  bool put_DeflateLevel(int level);
  bool put_MaxDecompressedSize(std::int64_t bytes);

  // Compression (cls_gzip_compress.cpp)

  bool CompressFile(const XString& inPath, const XString& outPath, ProgressEvent* progress);
  bool CompressFile2(const XString& inPath, const XString& embeddedName, const XString& outPath,
                     ProgressEvent* progress);
  bool CompressFileToMem(const XString& inPath, DataBuffer& out, ProgressEvent* progress);
  bool CompressMemory(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress);
  bool CompressString(const XString& in, const XString& charset, DataBuffer& out,
                      ProgressEvent* progress);
  bool CompressStringToFile(const XString& in, const XString& charset, const XString& outPath,
                            ProgressEvent* progress);
  bool DeflateStringENC(const XString& in, const XString& charset, const XString& encoding,
                        XString& out);

  // Expansion (cls_gzip_expand.cpp)

  bool UncompressFile(const XString& inPath, const XString& outPath, ProgressEvent* progress);
  bool UncompressFileToMem(const XString& inPath, DataBuffer& out, ProgressEvent* progress);
  bool UncompressFileToString(const XString& inPath, const XString& charset, XString& out,
                              ProgressEvent* progress);
  bool UncompressMemory(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress);
  bool UncompressMemToFile(const DataBuffer& in, const XString& outPath, ProgressEvent* progress);
  bool UncompressString(const DataBuffer& in, const XString& charset, XString& out,
                        ProgressEvent* progress);
  bool InflateStringENC(const XString& in, const XString& charset, const XString& encoding,
                        XString& out);

  bool ExamineFile(const XString& inPath, ProgressEvent* progress);
  bool ExamineMemory(const DataBuffer& in, ProgressEvent* progress);
  bool UnTarGz(const XString& inPath, const XString& outFolder, ProgressEvent* progress);
  bool XfdlToXml(const XString& xfdl, XString& out);

  bool ReadFile(const XString& path, DataBuffer& out);
  bool WriteFile(const XString& path, const DataBuffer& data);

 private:
  bool fillHeader(MethodCall& call, const XString* inPath, const XString& name, GzipHeader& header);
  bool compress(MethodCall& call, const GzipHeader& header, DataSource& in, DataSink& out);
  bool compressMemory(MethodCall& call, ByteSpan in, DataSink& out);
  bool compressFile(const char* method, const XString& inPath, const XString& name,
                    const XString& outPath, ProgressEvent* progress);

  void setUp(MethodCall& call, GzipReader& reader) const;
  bool expand(MethodCall& call, DataSource& in, DataSink& out);
  bool expandFile(MethodCall& call, const XString& inPath, DataSink& out);
  bool examine(MethodCall& call, DataSource& in);

  GzipSettings settings_;
  SystemTime localLastMod_;  ///< all zero when none is set
  ZantrelDeflate deflate_;
};

}  // namespace zantrel
