#pragma once
// Runs a test body once for each instruction-set level that this processor has.

#include <gtest/gtest.h>

#include "platform/cpu_features.h"

namespace zantrel::test {

/// `body` is called with the portable path in force, then with each vector level up to the best.
template <class Body>
void onEachCpuPath(const Body& body) {
  const CpuFeatures all = detectCpuFeatures();
  const auto run = [&body](const char* name, const CpuFeatures& features) {
    SCOPED_TRACE(name);
    const ScopedCpuFeatures scope(features);
    body();
  };
  CpuFeatures features;
  run("portable", features);
  if (!all.ssse3) return;
  features.ssse3 = true;
  run("ssse3", features);
  if (!all.avx2) return;
  features.avx2 = true;
  run("avx2", features);
  if (all.avx512) run("all", all);
}

}  // namespace zantrel::test
