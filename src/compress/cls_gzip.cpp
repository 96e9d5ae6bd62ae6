#include "compress/cls_gzip.h"

#include "core/calendar.h"

namespace zantrel {
namespace {

constexpr int kLastYear = 9999;

bool exists(const SystemTime& time) {
  return time.year <= kLastYear && time.month >= 1 && time.month <= 12 && time.day >= 1 &&
         time.day <= daysInMonth(time.year, time.month) && time.hour <= 23 && time.minute <= 59 &&
         time.second <= 59 && time.milliseconds <= 999;
}

}  // namespace

bool ClsGzip::put_LocalLastMod(const SystemTime& local) {
  SystemTime given = local;
  given.dayOfWeek = 0;
  if (given != SystemTime() && !exists(given)) {
    log().logError("This date or time does not exist.");
    return false;
  }
  localLastMod_ = given;
  return true;
}

bool ClsGzip::put_DeflateLevel(int level) {
  if (level < 0 || level > 9) {
    log().logError("The level of deflate is a number from 0 to 9.");
    return false;
  }
  settings_.deflateLevel = level;
  return true;
}

bool ClsGzip::put_MaxDecompressedSize(std::int64_t bytes) {
  if (bytes < 0) {
    log().logError("A size cannot be negative.");
    return false;
  }
  settings_.maxDecompressedSize = bytes;
  return true;
}

bool ClsGzip::ReadFile(const XString& path, DataBuffer& out) {
  return call("ReadFile", [&](MethodCall& c) { return out.loadFileUtf8(path.getUtf8(), c.log()); });
}

bool ClsGzip::WriteFile(const XString& path, const DataBuffer& data) {
  return call("WriteFile",
              [&](MethodCall& c) { return data.saveToFileUtf8(path.getUtf8(), c.log()); });
}

}  // namespace zantrel
