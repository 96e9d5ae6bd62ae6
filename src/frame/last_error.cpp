// The members of a component that show the activity log of its most recent method.

#include "core/xstring.h"
#include "frame/component.h"

namespace zantrel {

namespace {

void assignRendering(StringBuffer& rendering, bool normalise, XString& out) {
  if (normalise) rendering.toCRLF();
  out.setFromUtf8(rendering.getString());
}

}  // namespace

void ClsBase::GetTextLogX(XString& out, bool normalise) {
  StringBuffer text;
  log_.getText(text);
  assignRendering(text, normalise, out);
}

void ClsBase::GetXmlLogX(XString& out, bool normalise) {
  StringBuffer xml;
  log_.getXml(xml);
  assignRendering(xml, normalise, out);
}

void ClsBase::GetHtmlLogX(XString& out, bool normalise) {
  StringBuffer html;
  log_.getHtml(html);
  assignRendering(html, normalise, out);
}

bool ClsBase::SaveXmlLogX(const XString& path) {
  StringBuffer trimmed(path.getUtf8());
  trimmed.trim2();
  return !trimmed.empty() && log_.saveXml(trimmed.getString());
}

void Component::get_LastErrorText(XString& out) {
  const CritSecLock lock(criticalSection());
  GetTextLogX(out, true);
}

void Component::get_LastErrorXml(XString& out) {
  const CritSecLock lock(criticalSection());
  GetXmlLogX(out, true);
}

void Component::get_LastErrorHtml(XString& out) {
  const CritSecLock lock(criticalSection());
  GetHtmlLogX(out, true);
}

bool Component::SaveLastError(const XString& path) {
  const CritSecLock lock(criticalSection());
  return SaveXmlLogX(path);
}

void Component::get_Version(XString& out) const {
  out.setFromUtf8(version());
}

}  // namespace zantrel
