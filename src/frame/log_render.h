#pragma once
// The three renderings of an activity log. Each appends to `out`.

namespace zantrel {

class LogEntry2;
class StringBuffer;

/// Indented lines. Errors and infos look the same.
void renderLogText(const LogEntry2& root, StringBuffer& out);
/// Elements without indentation. Values that hold markup stand in CDATA sections; nothing else is
/// escaped (deliberate: what engines log as fragments is XML already).
void renderLogXml(const LogEntry2& root, StringBuffer& out);
/// A fragment of HTML with nested quotation blocks. Tags are written as they are (deliberate: they
/// are the library's own words).
void renderLogHtml(const LogEntry2& root, StringBuffer& out);

}  // namespace zantrel
