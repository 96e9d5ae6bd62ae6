#include "facade/holder.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "facade/fake_component.h"

namespace zantrel::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Zantrel::Bytes;
using Zantrel::bytesOf;

TEST(FacadeCallTest, ConvertsArgumentsAndResultsByTheirTypes) {
  FakePublic object;
  std::string echoed;
  EXPECT_TRUE(object.Echo(u"gr\u00FCn", echoed));
  EXPECT_EQ(echoed, "gr\xC3\xBCn");
  EXPECT_EQ(object.Number(7, 0.75, true), 117);
}

TEST(FacadeCallTest, TextKeepsItsZeroCharacters) {
  FakePublic object;
  facade::put(object.impl_, "Name", &FakeSettings::name,
              Zantrel::Text(std::string_view("a\0b", 3)));
  EXPECT_EQ(facade::get<std::string>(object.impl_, "Name", &FakeSettings::name),
            std::string("a\0b", 3));
}

TEST(FacadeCallTest, InputBytesAreBorrowedNotCopied) {
  FakePublic object;
  const Bytes input{1, 2, 3};
  const void* seen = nullptr;
  object.native().work = [&](MethodCall&, const DataBuffer& in, DataBuffer&, ProgressEvent*) {
    seen = in.getData2();
    return true;
  };
  Bytes out;
  EXPECT_TRUE(object.Work(input, out));
  EXPECT_EQ(seen, input.data());
}

TEST(FacadeCallTest, OutputBytesReuseTheStorageOfTheCaller) {
  FakePublic object;
  object.native().work = [](MethodCall&, const DataBuffer& in, DataBuffer& out, ProgressEvent*) {
    return out.append(in);
  };
  Bytes out(1000, 0xEE);
  const void* const storage = out.data();
  EXPECT_TRUE(object.Work(bytesOf("first"), out));
  EXPECT_EQ(out, Bytes({'f', 'i', 'r', 's', 't'}));
  EXPECT_TRUE(object.Work(bytesOf(std::string(1000, 'x')), out));
  EXPECT_EQ(out, Bytes(1000, 'x'));
  EXPECT_EQ(out.data(), storage);
  EXPECT_TRUE(object.Work(bytesOf(std::string(5000, 'y')), out));
  EXPECT_EQ(out, Bytes(5000, 'y'));
}

TEST(FacadeCallTest, OutputMayBeTheInput) {
  FakePublic object;
  object.native().work = [](MethodCall&, const DataBuffer& in, DataBuffer& out, ProgressEvent*) {
    return out.append("<") && out.append(in) && out.append(">");
  };
  Bytes bytes{'a', 'b', 'c'};
  bytes.reserve(100);
  EXPECT_TRUE(object.Work(bytes, bytes));
  EXPECT_EQ(bytes, Bytes({'<', 'a', 'b', 'c', '>'}));
}

TEST(FacadeCallTest, ExceptionsEndInTheExceptionLogAndClearTheOutput) {
  FakePublic object;
  object.native().work = [](MethodCall& c, const DataBuffer&, DataBuffer& out,
                            ProgressEvent*) -> bool {
    c.log().logInfo("half done");
    out.append("partial");
    throw std::runtime_error("the disk is on fire");
  };
  Bytes out{1, 2, 3};
  EXPECT_FALSE(object.Work({}, out));
  EXPECT_TRUE(out.empty());
  EXPECT_FALSE(object.native().get_LastMethodSuccess());
  EXPECT_THAT(object.log(), StartsWith("ZantrelLog:\r\n  Work:\r\n    DllDate: "));
  EXPECT_THAT(object.log(), HasSubstr("    Internal exception\r\n    ExceptionUpdate: 1004\r\n"));
  EXPECT_THAT(object.log(), HasSubstr("exceptionLog: the disk is on fire"));
  EXPECT_THAT(object.log(), Not(HasSubstr("half done")));
}

TEST(FacadeCallTest, AnythingThrownIsCaught) {
  FakePublic object;
  object.native().throwAfterOutput = true;
  std::string out = "old";
  EXPECT_FALSE(object.Echo("new", out));
  EXPECT_EQ(out, "");
  EXPECT_THAT(object.log(), HasSubstr("Internal exception"));
  EXPECT_EQ(facade::get<int>(object.impl_, "ComputedNumber", &FakeComponent::get_ComputedNumber),
            0);
  EXPECT_THAT(object.log(), HasSubstr("ComputedNumber:"));
}

TEST(FacadeCallTest, InputBeyondTheBuffersIsRefusedUnread) {
  if (sizeof(std::size_t) <= 4) GTEST_SKIP() << "such input does not exist with 32 bits";
  FakePublic object;
  bool called = false;
  object.native().work = [&](MethodCall&, const DataBuffer&, DataBuffer&, ProgressEvent*) {
    return called = true;
  };
  const std::uint8_t byte = 0;
  Bytes out{1};
  EXPECT_FALSE(object.Work({&byte, static_cast<std::size_t>(facade::kMaxBytes + 1)}, out));
  EXPECT_FALSE(called);
  EXPECT_TRUE(out.empty());
  EXPECT_THAT(object.log(), HasSubstr(facade::kTooLarge));
  EXPECT_THAT(object.log(), HasSubstr("NumBytes: 4294967296\r\n    Failed."));

  std::string echoed = "old";
  const char* const text = reinterpret_cast<const char*>(&byte);
  EXPECT_FALSE(object.Echo(
      std::string_view(text, static_cast<std::size_t>(facade::kMaxTextBytes + 1)), echoed));
  EXPECT_EQ(echoed, "");
  EXPECT_THAT(object.log(), HasSubstr("Echo:"));
}

TEST(FacadePropertyTest, StoredCheckedAndComputedPropertiesReachTheirPlace) {
  FakePublic object;
  facade::put(object.impl_, "Number", &FakeSettings::number, -3);
  EXPECT_EQ(facade::get<int>(object.impl_, "Number", &FakeSettings::number), -3);
  facade::put(object.impl_, "Blob", &FakeSettings::blob, bytesOf("blob"));
  EXPECT_EQ(facade::get<Bytes>(object.impl_, "Blob", &FakeSettings::blob),
            Bytes({'b', 'l', 'o', 'b'}));
  EXPECT_EQ(facade::get<std::string>(object.impl_, "Computed", &FakeComponent::get_Computed),
            "computed");
  const auto check = [&](Zantrel::Text value) {
    return facade::put(object.impl_, "Checked", &FakeComponent::put_Checked, value);
  };
  EXPECT_TRUE(check("ok"));
  EXPECT_FALSE(check("refused"));
}

TEST(FacadePropertyTest, GettersAndSettersLeaveTheLogOfTheLastMethod) {
  FakePublic object;
  EXPECT_EQ(object.Number(1, 0, false), 1);
  const std::string log = object.log();
  facade::put(object.impl_, "Number", &FakeSettings::number, 9);
  facade::get<std::string>(object.impl_, "Computed", &FakeComponent::get_Computed);
  EXPECT_EQ(object.log(), log);
}

TEST(MovedFromTest, EveryCallFailsWithALogEntryUntilAnotherComponentMovesIn) {
  FakePublic object;
  FakePublic other;
  other.impl_ = std::move(object.impl_);
  EXPECT_THAT(object.log(), HasSubstr(facade::kMovedFrom));

  std::string echoed = "old";
  EXPECT_FALSE(object.Echo("x", echoed));
  EXPECT_EQ(echoed, "");
  EXPECT_THAT(object.log(), StartsWith("ZantrelLog:\r\n  Echo:\r\n    DllDate: "));
  EXPECT_THAT(object.log(), HasSubstr(facade::kMovedFrom));
  EXPECT_THAT(object.log(), HasSubstr("Failed."));

  facade::put(object.impl_, "Number", &FakeSettings::number, 9);
  EXPECT_EQ(facade::get<int>(object.impl_, "Number", &FakeSettings::number), 0);
  EXPECT_THAT(object.log(), HasSubstr("  Number:\r\n    "));
  EXPECT_FALSE(
      facade::put(object.impl_, "Checked", &FakeComponent::put_Checked, Zantrel::Text("ok")));

  object.impl_ = std::move(other.impl_);
  EXPECT_TRUE(object.Echo("x", echoed));
  EXPECT_EQ(echoed, "x");
}

}  // namespace
}  // namespace zantrel::test
