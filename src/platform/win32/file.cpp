// Files through the system's handles. New content goes to a file of its own beside the target and
// replaces it whole, so that readers see the old or the new content and a failure leaves the old.

#include "platform/file.h"

#include <algorithm>
#include <utility>

#include "platform/temporary_name.h"
#include "platform/win32/path_name.h"
#include "platform/win32/utf16.h"

namespace zantrel {

namespace {

constexpr std::size_t kLargestTransfer = std::size_t{1} << 30;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

OsError lastError() {
  const DWORD error = GetLastError();
  return error != 0 ? error : ERROR_GEN_FAILURE;
}

class Handle {
 public:
  Handle() = default;
  ~Handle() { close(); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  void adopt(HANDLE handle) {
    close();
    handle_ = handle;
  }
  bool isOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE get() const { return handle_; }
  OsError close() {
    const HANDLE handle = std::exchange(handle_, INVALID_HANDLE_VALUE);
    return handle == INVALID_HANDLE_VALUE || CloseHandle(handle) ? 0 : lastError();
  }

 private:
  HANDLE handle_ = INVALID_HANDLE_VALUE;
};

// The path that an open file really has, its symbolic links followed.
std::string finalPath(HANDLE file) {
  wchar_t text[32768];
  const DWORD size = GetFinalPathNameByHandleW(file, text, 32768, FILE_NAME_NORMALIZED);
  return size > 0 && size < 32768 ? utf8FromWide({text, size}) : std::string();
}

}  // namespace

struct InputFile::Impl {
  Handle file;
};

InputFile::InputFile() noexcept = default;
InputFile::~InputFile() = default;
InputFile::InputFile(InputFile&&) noexcept = default;
InputFile& InputFile::operator=(InputFile&&) noexcept = default;

OsError InputFile::open(const std::string& utf8Path) {
  close();
  PathName name;
  if (const DWORD error = name.set(utf8Path)) return error;
  auto impl = std::make_unique<Impl>();
  impl->file.adopt(name.create(GENERIC_READ, kShareAll, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL));
  if (!impl->file.isOpen()) return lastError();
  impl_ = std::move(impl);
  return 0;
}

void InputFile::close() noexcept {
  impl_.reset();
}

bool InputFile::isOpen() const noexcept {
  return impl_ != nullptr;
}

OsError InputFile::read(void* buffer, std::size_t capacity, std::size_t& got) {
  got = 0;
  if (!impl_) return ERROR_INVALID_HANDLE;
  DWORD size = 0;
  const auto wanted = static_cast<DWORD>(std::min(capacity, kLargestTransfer));
  if (!ReadFile(impl_->file.get(), buffer, wanted, &size, nullptr)) {
    const OsError error = lastError();
    return error == ERROR_BROKEN_PIPE || error == ERROR_HANDLE_EOF ? 0 : error;
  }
  got = size;
  return 0;
}

std::int64_t InputFile::size() const noexcept {
  LARGE_INTEGER size;
  if (!impl_ || GetFileType(impl_->file.get()) != FILE_TYPE_DISK ||
      !GetFileSizeEx(impl_->file.get(), &size))
    return -1;
  return size.QuadPart;
}

OsError InputFile::seek(std::int64_t offset) noexcept {
  if (!impl_) return ERROR_INVALID_HANDLE;
  LARGE_INTEGER to;
  to.QuadPart = offset;
  return SetFilePointerEx(impl_->file.get(), to, nullptr, FILE_BEGIN) ? 0 : lastError();
}

struct OutputFile::Impl {
  Handle file;
  PathName target;
  PathName temporary;
  bool hasTemporary = false;  // false: the target is written directly
  DWORD keptAttributes = INVALID_FILE_ATTRIBUTES;

  ~Impl() {
    file.close();
    if (hasTemporary) temporary.remove();
  }

  OsError openTemporary(const std::string& beside) {
    constexpr int kAttempts = 16;
    OsError error = 0;
    for (int i = 0; i < kAttempts; ++i) {
      const std::string name = temporaryNameBeside(beside, "\\/:", "zantrel-", ".tmp");
      if (const DWORD bad = temporary.set(name)) return bad;
      file.adopt(temporary.create(GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL));
      if (file.isOpen()) {
        hasTemporary = true;
        return 0;
      }
      error = lastError();
      if (error != ERROR_FILE_EXISTS) break;
    }
    return error;
  }

  OsError open(const std::string& utf8Path) {
    if (const DWORD error = target.set(utf8Path)) return error;
    // Opening what is there asks for the right to write it and tells a device from a file.
    file.adopt(target.create(GENERIC_WRITE, kShareAll, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL));
    if (!file.isOpen()) {
      const OsError error = lastError();
      return error == ERROR_FILE_NOT_FOUND ? openTemporary(utf8Path) : error;
    }
    if (GetFileType(file.get()) != FILE_TYPE_DISK) return 0;
    std::string path = utf8Path;
    keptAttributes = target.attributes();
    // An administrator may open what is marked read-only; replacing it would lose the mark's point.
    if (keptAttributes != INVALID_FILE_ATTRIBUTES &&
        (keptAttributes & FILE_ATTRIBUTE_READONLY) != 0)
      return ERROR_ACCESS_DENIED;
    if (keptAttributes != INVALID_FILE_ATTRIBUTES &&
        (keptAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
      const std::string followed = finalPath(file.get());
      if (!followed.empty()) path = followed;
      if (const DWORD error = target.set(path)) return error;
      keptAttributes = target.attributes();
    }
    file.close();
    return openTemporary(path);
  }

  // ReplaceFile also keeps the old file's access rights, but not every file system offers it.
  OsError replaceTarget() {
    if (keptAttributes != INVALID_FILE_ATTRIBUTES) {
      if (ReplaceFileW(target.wide().c_str(), temporary.wide().c_str(), nullptr,
                       REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr))
        return 0;
      temporary.setAttributes(keptAttributes);
    }
    return MoveFileExW(temporary.wide().c_str(), target.wide().c_str(), MOVEFILE_REPLACE_EXISTING)
               ? 0
               : lastError();
  }
};

OutputFile::OutputFile() noexcept = default;
OutputFile::~OutputFile() = default;
OutputFile::OutputFile(OutputFile&&) noexcept = default;
OutputFile& OutputFile::operator=(OutputFile&&) noexcept = default;

OsError OutputFile::open(const std::string& utf8Path) {
  discard();
  auto impl = std::make_unique<Impl>();
  if (const OsError error = impl->open(utf8Path)) return error;
  impl_ = std::move(impl);
  return 0;
}

bool OutputFile::isOpen() const noexcept {
  return impl_ != nullptr;
}

OsError OutputFile::write(const void* data, std::size_t size) {
  if (!impl_) return ERROR_INVALID_HANDLE;
  const auto* from = static_cast<const char*>(data);
  while (size > 0) {
    DWORD put = 0;
    const auto part = static_cast<DWORD>(std::min(size, kLargestTransfer));
    if (!WriteFile(impl_->file.get(), from, part, &put, nullptr)) return lastError();
    if (put == 0) return ERROR_WRITE_FAULT;
    from += put;
    size -= put;
  }
  return 0;
}

OsError OutputFile::commit() {
  if (!impl_) return ERROR_INVALID_HANDLE;
  const std::unique_ptr<Impl> impl = std::move(impl_);
  if (const OsError error = impl->file.close()) return error;
  if (!impl->hasTemporary) return 0;
  if (const OsError error = impl->replaceTarget()) return error;
  impl->hasTemporary = false;
  return 0;
}

void OutputFile::discard() noexcept {
  impl_.reset();
}

bool fileExists(const std::string& utf8Path) {
  PathName name;
  if (name.set(utf8Path) != ERROR_SUCCESS) return false;
  const DWORD attributes = name.attributes();
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

OsError removeFile(const std::string& utf8Path) {
  PathName name;
  if (const DWORD error = name.set(utf8Path)) return error;
  return name.remove() ? 0 : lastError();
}

}  // namespace zantrel
