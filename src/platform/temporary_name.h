#pragma once

#include <string>
#include <string_view>

namespace zantrel {

/// Path of a file that nobody has, in the folder of `path`: `prefix`, sixteen random digits and
/// `suffix` behind the last of the characters `separators`.
std::string temporaryNameBeside(const std::string& path, const char* separators,
                                std::string_view prefix, std::string_view suffix);

}  // namespace zantrel
