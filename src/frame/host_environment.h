#pragma once
// What the process is to the library: which facade built its objects, and whether it runs inside a
// web browser. Process-wide values that a facade sets when it is loaded.

namespace zantrel {

/// Kinds of facade that the log of the environment tells apart.
enum class FacadeKind : int {
  Native = 0,
  DotNet1 = 1,
  DotNet2 = 2,
  ActiveX = 3,
  DotNet2X64 = 264,
};

void setFacadeKind(FacadeKind kind);
/// The facade in words, as the log shows it.
const char* facadeName();

void setHostedInBrowser(bool hosted);
bool hostedInBrowser();

/// The build date that logs show as "DllDate": a constant of the build.
const char* buildDate();

}  // namespace zantrel
