#pragma once

#include "core/log_base.h"
#include "frame/error_log.h"
#include "frame/zantrel_crit_sec.h"

namespace zantrel {

/// The activity log of a component. Several threads may write to it: every operation holds the
/// log's own critical section from start to end.
class Logger final : public LogBase {
 public:
  bool getXml(StringBuffer& out) override;
  bool getHtml(StringBuffer& out) override;
  bool getText(StringBuffer& out) override;
  bool logError(const char* text) override;
  bool logInfo(const char* text) override;
  bool logXml(const char* text) override;
  bool clearLog() override;
  bool enterContext(const char* name, bool flag) override;
  bool leaveContext() override;
  bool logData(const char* tag, const char* value) override;
  bool logDataLong(const char* tag, std::int32_t value) override;
  bool logData64(const char* tag, std::int64_t value) override;
  bool logHex(const char* tag, std::uint32_t value) override;
  bool logTickCount(const char* tag) override;
  bool saveXml(const char* path) override;

 private:
  ZantrelCritSec section_;
  ErrorLog tree_;
};

}  // namespace zantrel
