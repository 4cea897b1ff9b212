// The real models and the photograph that every checkout has, and those photographs that lie beside some.
#pragma once

#include "qorocv460/qorocv460.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace qorocv::testing {

/// The directory of the embedded models under their short names, as initModelsAtPath takes it.
inline std::string realModels() {
  return QOROCV460_MODELS_DIR;
}

/// A photograph by its name: one of the checkout's own, else one beside it, where it may not be.
inline std::filesystem::path realPhoto(const char* name) {
  const auto embedded = std::filesystem::path(QOROCV460_PHOTOS_DIR) / name;
  return std::filesystem::exists(embedded)
             ? embedded
             : std::filesystem::path(QOROCV460_SHARED_PHOTOS_DIR) / name;
}

/// Whether a photograph is there; says so where it is not.
inline bool haveRealPhoto(const char* name) {
  const bool there = std::filesystem::exists(realPhoto(name));
  if (!there) {
    std::cout << "without " << name << ", which does not lie beside the checkout" << std::endl;
  }
  return there;
}

/// Those of the photographs that are there.
inline std::vector<const char*> photosAtHand(std::initializer_list<const char*> names) {
  std::vector<const char*> there;
  std::copy_if(names.begin(), names.end(), std::back_inserter(there), haveRealPhoto);
  return there;
}

/// Tests with the real models.
class RealModelsTest : public ::testing::Test {
protected:
  void SetUp() override { ASSERT_EQ(initModelsAtPath(realModels().c_str()), 0); }
};

} // namespace qorocv::testing
