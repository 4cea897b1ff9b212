// One call of the library, and the faces in its records.
#pragma once

#include "face.h"

#include <qorocv460/qorocv460.h>
#include <vector>

namespace qorfaces {

/// What a record holds behind the box.
enum class Layout { plain, headCentre, landmarks };

/// What one call returns, and the variables that it fills.
struct Call {
  explicit Call(Layout records) : layout(records) {}

  Layout layout;
  int found = QOROCV460_UNREADABLE; // boxes
  std::vector<double> results = std::vector<double>(QOROCV460_LANDMARK_RESULTS);
  int count = static_cast<int>(results.size());
  int width = 0;
  int height = 0;
};

std::vector<Face> facesOf(const Call& call);

} // namespace qorfaces
