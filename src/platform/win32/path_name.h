#pragma once
// The name under which Windows is asked for a file: its ANSI form when the path converts exactly,
// otherwise its UTF-16 form, which long paths (beyond MAX_PATH) need in any case.

#include <string>

#include <windows.h>

namespace zantrel {

class PathName {
 public:
  /// ERROR_SUCCESS, or ERROR_INVALID_NAME for bytes that are not UTF-8 or contain a zero.
  DWORD set(const std::string& utf8Path);

  HANDLE create(DWORD access, DWORD share, DWORD disposition, DWORD attributes) const;
  DWORD attributes() const;
  bool setAttributes(DWORD attributes) const;
  bool remove() const;

  bool isAnsi() const { return useAnsi_; }
  const std::wstring& wide() const { return wide_; }

 private:
  std::wstring wide_;
  std::string ansi_;
  bool useAnsi_ = false;
};

}  // namespace zantrel
