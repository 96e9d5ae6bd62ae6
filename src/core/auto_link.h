#pragma once

#include <string_view>

namespace zantrel {

class StringBuffer;

/// Appends a text for HTML with every URL in it made a link: what begins with "http://",
/// "https://", "ftp://", "mailto:" or "www." where a word begins. Everything else is copied as it
/// is: a text that is not HTML yet is to be escaped first. Tags, comments and the content of links,
/// scripts, styles, titles and text areas are left alone, so that doing it twice changes nothing. A
/// URL ends before a blank, a quotation mark, "<", ">" or one of these as an entity; punctuation at
/// its end and a ")" without "(" do not belong to it. False when storage cannot be had.
bool autoLinkUrls(std::string_view text, StringBuffer& out);

}  // namespace zantrel
