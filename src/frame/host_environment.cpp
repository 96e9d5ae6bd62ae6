#include "frame/host_environment.h"

#include <atomic>

namespace zantrel {

namespace {

std::atomic<FacadeKind> facadeKind{FacadeKind::Native};
std::atomic<bool> inBrowser{false};

}  // namespace

void setFacadeKind(FacadeKind kind) {
  facadeKind = kind;
}

const char* facadeName() {
  switch (facadeKind.load()) {
    case FacadeKind::ActiveX:
      return "ActiveX";
    case FacadeKind::DotNet1:
      return ".NET 1.*";
    case FacadeKind::DotNet2:
      return ".NET 2.0";
    case FacadeKind::DotNet2X64:
      return ".NET 2.0 / x64";
    case FacadeKind::Native:
      break;
  }
  return "Visual C++ 8.0";  // any other facade, whatever compiler built it
}

void setHostedInBrowser(bool hosted) {
  inBrowser = hosted;
}

bool hostedInBrowser() {
  return inBrowser;
}

const char* buildDate() {
  return ZANTREL_BUILD_DATE;
}

}  // namespace zantrel
