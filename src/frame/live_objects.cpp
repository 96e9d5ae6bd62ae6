#include "frame/live_objects.h"

namespace zantrel {

namespace {

constexpr std::array<const char*, kLiveObjectKinds> kTags{
    "ClsZipGcp",       "ClsZipEntryGcp", "ClsMailManGcp", "ClsImapGcp", "ImapGcp",  "ClsDkimGcp",
    "DkimGcp",         "ClsCryptGcp",    "ClsMimeGcp",    "Pop3GCP",    "CryptGCP", "EmailGCP",
    "MimeMessage2GCP", "PpmdModelGCP",   "TreeNodeGCP",   "HttpGCP",    "FtpGCP",   "SocketGCP",
    "StackGCP",        "InflateGCP",     "OutputGCP",     "CertGCP",    "UL1GCP"};

static_assert(static_cast<std::size_t>(LiveObject::UL1) + 1 == kLiveObjectKinds);

std::array<std::atomic<std::int32_t>, kLiveObjectKinds> counts{};

}  // namespace

const char* liveObjectTag(LiveObject kind) {
  return kTags[static_cast<std::size_t>(kind)];
}

std::atomic<std::int32_t>& liveObjectCount(LiveObject kind) {
  return counts[static_cast<std::size_t>(kind)];
}

void resetLiveObjectCounts() {
  for (auto& count : counts) count.store(0, std::memory_order_relaxed);
}

}  // namespace zantrel
