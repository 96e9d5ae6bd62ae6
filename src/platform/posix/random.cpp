#include "platform/random.h"

#include <cerrno>
#include <cstdint>

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include "platform/fail_fast.h"

namespace zantrel {

namespace {

// Kernels without the getrandom call still have the device.
void readRandomDevice(std::uint8_t* out, std::size_t size) {
  const int file = ::open("/dev/urandom", O_RDONLY | O_CLOEXEC);
  if (file < 0) failFast();
  while (size > 0) {
    const ssize_t got = ::read(file, out, size);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) failFast();
    out += got;
    size -= static_cast<std::size_t>(got);
  }
  ::close(file);
}

}  // namespace

void randomBytes(void* buffer, std::size_t size) {
  auto* out = static_cast<std::uint8_t*>(buffer);
  while (size > 0) {
    const ssize_t got = ::getrandom(out, size, 0);
    if (got < 0) {
      if (errno == EINTR) continue;
      return readRandomDevice(out, size);
    }
    out += got;
    size -= static_cast<std::size_t>(got);
  }
}

}  // namespace zantrel
