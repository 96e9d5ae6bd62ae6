#pragma once
// Dates of mail and of the web: read from RFC 822 and ISO 8601 texts, written in fixed layouts.

#include <string_view>

#include "core/zantrel_object.h"
#include "platform/clock.h"

namespace zantrel {

class StringBuffer;

class DateParser final : public ZantrelObject {
 public:
  /// Reads "2008-06-03T11:05:30-07:00" or "[Tue,] 3 Jun 2008 11:05[:30] [zone]" as UTC, to the
  /// second. False, with `utc` not changed, for anything else.
  bool parseDate(std::string_view text, SystemTime& utc) const;

  // All of these append.

  /// The current local time for a mail's Date field: "Tue, 03 Jun 2008 11:05:30 -0700".
  void currentEmailDate(StringBuffer& out) const;
  /// The current time in UTC: "Tue, 03 Jun 2008 18:05:30 +0000".
  void currentGmtDate(StringBuffer& out) const;
  /// The current local time as "Tue Jun 03 2008 11:05:30 -0700".
  void currentPlainDate(StringBuffer& out) const;
  /// The current local time as "2008-06-03T11:05:30-07:00".
  void currentIso8601(StringBuffer& out) const;
  /// A time in UTC laid out as by currentGmtDate().
  void gmtDate(const SystemTime& utc, StringBuffer& out) const;
  /// Conversions of the C library's strftime() with English names; %E, %O, %Z, %z, %G, %g, %V are
  /// not known. An unknown conversion is copied.
  void format(std::string_view layout, const SystemTime& time, StringBuffer& out) const;
};

}  // namespace zantrel
