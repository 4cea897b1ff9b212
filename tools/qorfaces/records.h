// The results array of one call of the library, and the faces in it.
#pragma once

#include "face.h"

#include <qorocv460/qorocv460.h>
#include <vector>

namespace qorfaces {

enum class Layout { plain, headCentre, landmarks };

/// One call of the library: the variables that it fills.
struct Call {
  std::vector<double> results = std::vector<double>(QOROCV460_LANDMARK_RESULTS);
  int count = static_cast<int>(results.size());
  int width = 0;
  int height = 0;
};

std::vector<Face> facesOf(const Call& call, Layout layout);

} // namespace qorfaces
