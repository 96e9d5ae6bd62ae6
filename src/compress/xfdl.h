#pragma once

#include <string_view>

#include "core/bytes.h"
#include "core/data_buffer.h"

namespace zantrel {

class LogBase;

/// Finds the gzip data in an XFDL form: base64 behind a first line such as
/// application/vnd.xfdl; content-encoding="base64-gzip". A form that is XML as it stands gives
/// `isXml`. False, and logged, for a text that is neither.
bool readXfdl(std::string_view form, bool& isXml, DataBuffer& gzip, LogBase& log);

}  // namespace zantrel
