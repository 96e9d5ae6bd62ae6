#pragma once
// The callbacks through which engines report progress and ask whether to stop.

#include <cstdint>

namespace zantrel {

/// What a component-specific notification tells; its component says which fields it fills. Texts
/// are UTF-8 and belong to the notifier. A handler may change `number` where the component reads it
/// back.
struct EventValues {
  const char* text = nullptr;
  const char* text2 = nullptr;
  std::int64_t number = 0;
  std::int64_t number2 = 0;
};

/// Every operation does nothing and leaves `abort` as it is, which is false when it is called; a
/// sink overrides what it wants to hear. The order of the operations is fixed: new ones replace a
/// spare.
class ProgressEvent {
 public:
  virtual ~ProgressEvent();

  /// The operation's completed share rose to this percentage, 0 to 100.
  virtual void PercentDone(std::uint32_t percent, bool& abort);
  /// Comes now and then during long work and waits, to ask whether to stop.
  virtual void AbortCheck(bool& abort);
  /// The second percentage of operations that have two.
  virtual void PercentDone2(std::uint32_t percent, bool& abort);
  virtual void ComponentEvent4(EventValues& values, bool& abort);
  /// A named fact about the progress, such as a count of bytes. Both texts are UTF-8.
  virtual void ProgressInfo(const char* name, const char* value);

  // Spare operations for the notifications of single components.
  virtual void ComponentEvent6(EventValues& values, bool& abort);
  virtual void ComponentEvent7(EventValues& values, bool& abort);
  virtual void ComponentEvent8(EventValues& values, bool& abort);
  virtual void ComponentEvent9(EventValues& values, bool& abort);
  virtual void ComponentEvent10(EventValues& values, bool& abort);
  virtual void ComponentEvent11(EventValues& values, bool& abort);
  virtual void ComponentEvent12(EventValues& values, bool& abort);
  virtual void ComponentEvent13(EventValues& values, bool& abort);
  virtual void ComponentEvent14(EventValues& values, bool& abort);
  virtual void ComponentEvent15(EventValues& values, bool& abort);
  virtual void ComponentEvent16(EventValues& values, bool& abort);
  virtual void ComponentEvent17(EventValues& values, bool& abort);
  virtual void ComponentEvent18(EventValues& values, bool& abort);
  virtual void ComponentEvent19(EventValues& values, bool& abort);
  virtual void ComponentEvent20(EventValues& values, bool& abort);
  virtual void ComponentEvent21(EventValues& values, bool& abort);
  virtual void ComponentEvent22(EventValues& values, bool& abort);
  virtual void ComponentEvent23(EventValues& values, bool& abort);
  virtual void ComponentEvent24(EventValues& values, bool& abort);
  virtual void ComponentEvent25(EventValues& values, bool& abort);
  virtual void ComponentEvent26(EventValues& values, bool& abort);
  virtual void ComponentEvent27(EventValues& values, bool& abort);
  virtual void ComponentEvent28(EventValues& values, bool& abort);
  virtual void ComponentEvent29(EventValues& values, bool& abort);
  virtual void ComponentEvent30(EventValues& values, bool& abort);
  virtual void ComponentEvent31(EventValues& values, bool& abort);
  virtual void ComponentEvent32(EventValues& values, bool& abort);
  virtual void ComponentEvent33(EventValues& values, bool& abort);
  virtual void ComponentEvent34(EventValues& values, bool& abort);
};

}  // namespace zantrel
