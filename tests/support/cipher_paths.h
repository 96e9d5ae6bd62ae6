#pragma once
// Runs a test body once for each implementation of AES that this processor has.

#include <gtest/gtest.h>

#include "platform/cpu_features.h"

namespace zantrel::test {

template <class Body>
void onEachCipherPath(const Body& body) {
  const CpuFeatures all = detectCpuFeatures();
  const auto run = [&body](const char* name, const CpuFeatures& features) {
    SCOPED_TRACE(name);
    const ScopedCpuFeatures scope(features);
    body();
  };
  run("portable", CpuFeatures{});
  if (!all.aesNi) return;
  CpuFeatures features = all;
  features.vaes = false;
  run("aes instructions", features);
  if (all.vaes && all.avx512) run("512-bit aes instructions", all);
}

}  // namespace zantrel::test
