#include "crypto/mysql_aes.h"

#include <array>
#include <cstring>

#include "core/data_buffer.h"
#include "core/log_base.h"
#include "crypto/aes.h"
#include "crypto/padding.h"
#include "platform/secure_wipe.h"

namespace zantrel {
namespace {

constexpr std::size_t kBlock = Aes::kBlockSize;

Aes foldedCipher(ByteSpan password) {
  std::array<std::uint8_t, kBlock> key{};
  for (std::size_t i = 0; i < password.size(); ++i) key[i % kBlock] ^= password[i];
  Aes cipher;
  cipher.setKey(key);
  secureWipe(key.data(), key.size());
  return cipher;
}

std::uint8_t* prepare(std::size_t size, DataBuffer& out, LogBase& log) {
  std::uint8_t* const room = out.prepare(size);
  if (room == nullptr) log.logError("Not enough memory.");
  return room;
}

/// The padding's length, or 0 when it is none; in a time that does not depend on its bytes.
std::size_t checkedPadding(const std::uint8_t* lastBlock) {
  const std::size_t length = lastBlock[kBlock - 1];
  unsigned wrong = length - 1 < kBlock ? 0 : 1;
  for (std::size_t i = 0; i < kBlock; ++i) {
    const bool inPadding = i + length >= kBlock;
    wrong |= static_cast<unsigned>(inPadding) & static_cast<unsigned>(lastBlock[i] != length);
  }
  return wrong == 0 ? length : 0;
}

}  // namespace

bool mysqlAesEncrypt(ByteSpan text, ByteSpan password, DataBuffer& out, LogBase& log) {
  const std::size_t whole = text.size() - text.size() % kBlock;
  std::uint8_t* const room = prepare(whole + kBlock, out, log);
  if (room == nullptr) return false;
  std::array<std::uint8_t, kBlock> last{};
  const std::size_t rest = text.size() - whole;
  if (rest > 0) std::memcpy(last.data(), text.data() + whole, rest);
  writePadding(kPaddingCounted, last.data() + rest, kBlock - rest);

  const Aes cipher = foldedCipher(password);
  cipher.ecbEncrypt(text.data(), room, whole / kBlock);
  cipher.ecbEncrypt(last.data(), room + whole, 1);
  secureWipe(last.data(), last.size());
  out.commit(whole + kBlock);
  return true;
}

bool mysqlAesDecrypt(ByteSpan data, ByteSpan password, DataBuffer& out, LogBase& log) {
  if (data.empty() || data.size() % kBlock != 0) {
    log.logError("The encrypted data is not a whole number of blocks.");
    return false;
  }
  std::uint8_t* const room = prepare(data.size(), out, log);
  if (room == nullptr) return false;
  foldedCipher(password).ecbDecrypt(data.data(), room, data.size() / kBlock);
  const std::size_t padding = checkedPadding(room + data.size() - kBlock);
  if (padding == 0) {
    secureWipe(room, data.size());
    log.logError("The password is wrong, or the data was not encrypted in this way.");
    return false;
  }
  secureWipe(room + data.size() - padding, padding);
  out.commit(data.size() - padding);
  return true;
}

}  // namespace zantrel
