#pragma once
// Names of character sets and the numbers of their code pages.

#include <span>
#include <string_view>

namespace zantrel {

class StringBuffer;

class CharsetNaming {
 public:
  /// Code page of a name, 0 if it is unknown. Case, surrounding white space and "_" for "-" do not
  /// matter; a name of fewer than three characters is unknown.
  static int charsetToCodePage(std::string_view name);
  /// Canonical name of a code page; false, with `out` cleared, for one that has none.
  static bool codePageToCharset(int codePage, StringBuffer& out);

  struct AcceptedName {
    std::string_view name;
    int codePage;  ///< "ansi" has 0 here: its page is that of the process
  };
  static std::span<const AcceptedName> acceptedNames() noexcept;  ///< sorted by name
  struct CanonicalName {
    int codePage;
    std::string_view name;
  };
  static std::span<const CanonicalName> canonicalNames() noexcept;  ///< sorted by code page
};

}  // namespace zantrel
