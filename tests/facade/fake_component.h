#pragma once
// A component made for tests of the facade: it does what a test tells it, through the real frame.

#include <zantrel/types.h>

#include <functional>
#include <string>

#include "core/data_buffer.h"
#include "core/xstring.h"
#include "facade/common_members.h"
#include "frame/component.h"

namespace zantrel::test {

struct FakeSettings {
  XString name;
  DataBuffer blob;
  std::int32_t number = 5;
};

class FakeComponent final : public Component {
 public:
  FakeSettings& settings() noexcept { return settings_; }

  /// Runs what the test has put into `work`.
  bool Work(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress) {
    return call("Work", progress, [&](MethodCall& c) { return work(c, in, out, progress); });
  }
  bool EchoX(const XString& text, XString& out) {
    return call("Echo", [&](MethodCall&) {
      out.setFromUtf8(text.getUtf8());
      if (throwAfterOutput) throw 42;
      return true;
    });
  }
  std::int32_t Number(std::int64_t wide, double fraction, bool yes) {
    return call("Number", [&](MethodCall&) {
      return static_cast<std::int32_t>(wide) + (fraction > 0.5 ? 10 : 0) + (yes ? 100 : 0);
    });
  }
  bool put_Checked(const XString& value) { return value.getSizeUtf8() == 2; }
  void get_Computed(XString& out) { out.setFromUtf8("computed"); }
  std::int32_t get_ComputedNumber() { throw std::bad_alloc(); }

  std::function<bool(MethodCall&, const DataBuffer&, DataBuffer&, ProgressEvent*)> work;
  bool throwAfterOutput = false;

 private:
  FakeSettings settings_;
};

/// Stands where a generated public class stands.
struct FakePublic {
  struct Impl final : facade::Holder<FakeComponent> {};
  std::unique_ptr<Impl> impl_ = facade::create<Impl>();

  FakeComponent& native() { return impl_->native; }
  bool Work(Zantrel::ByteView in, Zantrel::Bytes& out) {
    return facade::call(impl_, "Work", &FakeComponent::Work, in, out,
                        facade::Handlers{&OnPercentDone, &OnAbortCheck, &OnProgressInfo});
  }
  bool Echo(Zantrel::Text text, std::string& out) {
    return facade::call(impl_, "Echo", &FakeComponent::EchoX, text, out);
  }
  int Number(std::int64_t wide, double fraction, bool yes) {
    return facade::call(impl_, "Number", &FakeComponent::Number, wide, fraction, yes);
  }
  std::string log() { return facade::get_LastErrorText(impl_); }

  std::function<void(Zantrel::PercentDoneEventArgs&)> OnPercentDone;
  std::function<void(Zantrel::AbortCheckEventArgs&)> OnAbortCheck;
  std::function<void(Zantrel::ProgressInfoEventArgs&)> OnProgressInfo;
};

}  // namespace zantrel::test
