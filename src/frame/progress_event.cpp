#include "frame/progress_event.h"

namespace zantrel {

ProgressEvent::~ProgressEvent() = default;

void ProgressEvent::PercentDone(std::uint32_t, bool&) {}
void ProgressEvent::AbortCheck(bool&) {}
void ProgressEvent::PercentDone2(std::uint32_t, bool&) {}
void ProgressEvent::ProgressInfo(const char*, const char*) {}
void ProgressEvent::ComponentEvent4(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent6(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent7(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent8(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent9(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent10(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent11(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent12(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent13(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent14(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent15(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent16(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent17(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent18(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent19(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent20(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent21(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent22(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent23(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent24(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent25(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent26(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent27(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent28(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent29(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent30(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent31(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent32(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent33(EventValues&, bool&) {}
void ProgressEvent::ComponentEvent34(EventValues&, bool&) {}

}  // namespace zantrel
