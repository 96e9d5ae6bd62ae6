#pragma once

#include <cstdint>
#include <string_view>

#include "core/string_buffer.h"
#include "core/zantrel_object.h"
#include "frame/logger.h"

namespace zantrel {

class XString;

/// Base of every component object: its activity log and its exception log.
class ClsBase : public ZantrelObject {
 public:
  ClsBase();
  ~ClsBase() override;
  ClsBase(const ClsBase&) = delete;
  ClsBase& operator=(const ClsBase&) = delete;

  /// Reserved questions to a component; nothing depends on the answer of the base, which is no.
  virtual bool reservedQuery1() const { return false; }
  virtual bool reservedQuery2() const { return false; }

  /// Whether a handle leads to a living component: refuses a destroyed or foreign object.
  static bool isValid(const ClsBase* handle);

  /// The activity log of the most recent method.
  Logger& log() { return log_; }

  // The activity log rendered. With `normalise` every line ends with CRLF.
  void GetTextLogX(XString& out, bool normalise);
  void GetXmlLogX(XString& out, bool normalise);
  void GetHtmlLogX(XString& out, bool normalise);
  /// Writes the XML rendering to a file; false for a path of blanks only or if the write failed.
  bool SaveXmlLogX(const XString& path);

  /// Notes an internal exception for the exception log, which CreateExceptionLog() shows.
  void appendException(std::string_view what);
  /// Makes the activity log tell of an internal exception in the method of this name. A log that a
  /// running method has open is continued.
  void CreateExceptionLog(const char* name);

 protected:
  /// "Username" and "Component": who runs the library, and through which facade.
  void logEnvironment();
  /// The info "Success." or the error "Failed.". Returns its argument.
  bool logResult(bool success);
  /// Clears the log, unless a call of the same object is running.
  void startLog();

  int callDepth_ = 0;  // public methods of this object that run now, one inside the other

 private:
  static constexpr std::uint32_t kAlive = 0x991144AA;

  Logger log_;
  StringBuffer exceptionLog_;
  // Volatile: optimisers drop a plain store into an object whose life ends.
  volatile std::uint32_t stamp_ = kAlive;
};

}  // namespace zantrel
