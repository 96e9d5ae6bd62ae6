#pragma once
// A component of encryption and digests with plain types around it.

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>

#include "crypt2/cls_crypt.h"
#include "support/component_log.h"
#include "support/test_data.h"

namespace zantrel::test {

struct Crypt {
  ClsCrypt* operator->() { return &component; }

  /// What a member answers that fills a buffer or a text; the test fails unless it succeeds as
  /// expected.
  template <class Member, class... In>
  std::string bytesOf(bool expected, Member member, const In&... in) {
    DataBuffer out;
    EXPECT_EQ((component.*member)(in..., out), expected) << log();
    return std::string(out.text());
  }
  template <class Member, class... In>
  std::string textOf(bool expected, Member member, const In&... in) {
    XString out;
    EXPECT_EQ((component.*member)(in..., out), expected) << log();
    return std::string(out.utf8());
  }
  std::string property(void (ClsCrypt::*getter)(XString&)) {
    XString out;
    (component.*getter)(out);
    return std::string(out.utf8());
  }

  void setHash(std::string_view name) { component.put_HashAlgorithm(XString(name)); }
  std::string hash(std::string_view data) {
    return hex(bytesOf(true, &ClsCrypt::HashBytesX, bytes(data)));
  }
  std::string hmac(std::string_view key, std::string_view data) {
    EXPECT_TRUE(component.SetHmacKeyBytes(bytes(key)));
    return hex(bytesOf(true, &ClsCrypt::HmacBytesX, bytes(data)));
  }

  std::string log() { return logOf(component); }
  void expectLogged(std::initializer_list<std::string_view> parts) {
    test::expectLogged(component, parts);
  }

  ClsCrypt component;
};

}  // namespace zantrel::test
