#include "platform/background_thread.h"

#include <system_error>
#include <utility>

namespace zantrel {

bool BackgroundThread::start(std::function<void()> work) {
  try {
    thread_ = std::thread(std::move(work));
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

void BackgroundThread::join() noexcept {
  if (thread_.joinable()) thread_.join();
}

}  // namespace zantrel
