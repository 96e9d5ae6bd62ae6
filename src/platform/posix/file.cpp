// Files through the system's descriptors. New content goes to a file of its own beside the target
// and is renamed over it, so that readers see the old or the new content and a failure leaves the
// old. Renaming gives the path a new file: other hard links keep the old content.

#define _FILE_OFFSET_BITS 64  // 64-bit sizes on 32-bit systems too

#include "platform/file.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "platform/temporary_name.h"

namespace zantrel {

namespace {

constexpr std::size_t kLargestTransfer = std::size_t{1} << 30;  // the system moves at most 2 GiB

OsError lastError() {
  return static_cast<OsError>(errno);
}

// A path with a zero byte inside would reach the system cut short.
bool usable(const std::string& path) {
  return path.find('\0') == std::string::npos;
}

int openRetrying(const char* path, int flags, mode_t mode = 0) {
  int file;
  do {
    file = ::open(path, flags | O_CLOEXEC, mode);
  } while (file < 0 && errno == EINTR);
  return file;
}

class Descriptor {
 public:
  Descriptor() = default;
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  void adopt(int number) {
    close();
    number_ = number;
  }
  bool isOpen() const { return number_ >= 0; }
  int get() const { return number_; }
  OsError close() {
    const int number = std::exchange(number_, -1);
    if (number < 0 || ::close(number) == 0 || errno == EINTR) return 0;
    return lastError();
  }

 private:
  int number_ = -1;
};

// Follows symbolic links by hand, because a link may point to a file that is still to be made.
OsError resolveLinks(std::string& path) {
  constexpr int kMostLinks = 40;
  for (int depth = 0; depth < kMostLinks; ++depth) {
    struct stat status;
    if (::lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return 0;
    std::vector<char> link(PATH_MAX);
    const ssize_t size = ::readlink(path.c_str(), link.data(), link.size());
    if (size < 0) return lastError();
    const std::string target(link.data(), static_cast<std::size_t>(size));
    const std::size_t slash = path.rfind('/');
    if (!target.empty() && target[0] != '/' && slash != std::string::npos) {
      path = path.substr(0, slash + 1) + target;
    } else {
      path = target;
    }
  }
  return ELOOP;
}

// Turns the signal of a pipe without reader into the plain error EPIPE, for this thread only.
class PipeSignalGuard {
 public:
  PipeSignalGuard() {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &pipe_, &previous_);
  }
  ~PipeSignalGuard() {
    const int error = errno;
    const timespec now{};
    if (!wasPending_)
      while (sigtimedwait(&pipe_, nullptr, &now) < 0 && errno == EINTR) {
      }
    pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
    errno = error;
  }
  PipeSignalGuard(const PipeSignalGuard&) = delete;
  PipeSignalGuard& operator=(const PipeSignalGuard&) = delete;

 private:
  sigset_t pipe_;
  sigset_t previous_;
  bool wasPending_ = false;
};

OsError writeAll(int file, const void* data, std::size_t size) {
  const auto* from = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t put = ::write(file, from, std::min(size, kLargestTransfer));
    if (put < 0) {
      if (errno == EINTR) continue;
      return lastError();
    }
    from += put;
    size -= static_cast<std::size_t>(put);
  }
  return 0;
}

}  // namespace

struct InputFile::Impl {
  Descriptor file;
};

InputFile::InputFile() noexcept = default;
InputFile::~InputFile() = default;
InputFile::InputFile(InputFile&&) noexcept = default;
InputFile& InputFile::operator=(InputFile&&) noexcept = default;

OsError InputFile::open(const std::string& utf8Path) {
  close();
  if (!usable(utf8Path)) return EINVAL;
  auto impl = std::make_unique<Impl>();
  impl->file.adopt(openRetrying(utf8Path.c_str(), O_RDONLY));
  if (!impl->file.isOpen()) return lastError();
  struct stat status;
  if (::fstat(impl->file.get(), &status) != 0) return lastError();
  if (S_ISDIR(status.st_mode)) return EISDIR;
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
  if (!impl_) return EBADF;
  for (;;) {
    const ssize_t size = ::read(impl_->file.get(), buffer, std::min(capacity, kLargestTransfer));
    if (size >= 0) {
      got = static_cast<std::size_t>(size);
      return 0;
    }
    if (errno != EINTR) return lastError();
  }
}

std::int64_t InputFile::size() const noexcept {
  struct stat status;
  if (!impl_ || ::fstat(impl_->file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return -1;
  return status.st_size;
}

OsError InputFile::seek(std::int64_t offset) noexcept {
  if (!impl_) return EBADF;
  return ::lseek(impl_->file.get(), offset, SEEK_SET) < 0 ? lastError() : 0;
}

struct OutputFile::Impl {
  Descriptor file;
  std::string target;     // links resolved
  std::string temporary;  // empty when the target is written directly

  ~Impl() { removeTemporary(); }

  void removeTemporary() {
    if (!temporary.empty()) ::unlink(temporary.c_str());
    temporary.clear();
  }

  OsError openDirect(const std::string& path) {
    file.adopt(openRetrying(path.c_str(), O_WRONLY));
    return file.isOpen() ? 0 : lastError();
  }

  OsError openTemporary(mode_t mode) {
    constexpr int kAttempts = 16;
    OsError error = 0;
    for (int i = 0; i < kAttempts; ++i) {
      const std::string name = temporaryNameBeside(target, "/", ".zantrel-", "");
      file.adopt(openRetrying(name.c_str(), O_WRONLY | O_CREAT | O_EXCL, mode));
      if (file.isOpen()) {
        temporary = name;
        return 0;
      }
      error = lastError();
      if (error != EEXIST) break;
    }
    return error;
  }

  // Owner first: changing it clears the set-user bits that the mode may have.
  OsError copyOwnerAndMode(const struct stat& from) const {
    mode_t mode = from.st_mode & 07777;
    if (::fchown(file.get(), from.st_uid, from.st_gid) != 0)
      mode &= static_cast<mode_t>(~(S_ISUID | S_ISGID));
    return ::fchmod(file.get(), mode) == 0 ? 0 : lastError();
  }

  OsError open(const std::string& path) {
    target = path;
    struct stat status;
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) return EISDIR;
    if (exists && !S_ISREG(status.st_mode)) return openDirect(path);
    if (const OsError error = resolveLinks(target)) return error;
    if (!exists) return openTemporary(0666);
    // Renaming would also replace a file that may not be written; ask for the right to write it.
    if (const OsError error = openDirect(target)) return error;
    if (const OsError error = openTemporary(0600)) return error;
    return copyOwnerAndMode(status);
  }
};

OutputFile::OutputFile() noexcept = default;
OutputFile::~OutputFile() = default;
OutputFile::OutputFile(OutputFile&&) noexcept = default;
OutputFile& OutputFile::operator=(OutputFile&&) noexcept = default;

OsError OutputFile::open(const std::string& utf8Path) {
  discard();
  if (!usable(utf8Path)) return EINVAL;
  if (utf8Path.empty()) return ENOENT;
  auto impl = std::make_unique<Impl>();
  if (const OsError error = impl->open(utf8Path)) return error;
  impl_ = std::move(impl);
  return 0;
}

bool OutputFile::isOpen() const noexcept {
  return impl_ != nullptr;
}

OsError OutputFile::write(const void* data, std::size_t size) {
  if (!impl_) return EBADF;
  if (!impl_->temporary.empty()) return writeAll(impl_->file.get(), data, size);
  const PipeSignalGuard guard;
  return writeAll(impl_->file.get(), data, size);
}

OsError OutputFile::commit() {
  if (!impl_) return EBADF;
  const std::unique_ptr<Impl> impl = std::move(impl_);
  if (const OsError error = impl->file.close()) return error;
  if (impl->temporary.empty()) return 0;
  if (::rename(impl->temporary.c_str(), impl->target.c_str()) != 0) return lastError();
  impl->temporary.clear();
  return 0;
}

void OutputFile::discard() noexcept {
  impl_.reset();
}

bool fileExists(const std::string& utf8Path) {
  struct stat status;
  return usable(utf8Path) && ::stat(utf8Path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

OsError removeFile(const std::string& utf8Path) {
  if (!usable(utf8Path)) return EINVAL;
  return ::unlink(utf8Path.c_str()) == 0 ? 0 : lastError();
}

}  // namespace zantrel
