// What is known of a photograph.
#pragma once

#include "face.h"

#include <vector>

namespace qorfaces {

struct Analysis {
  int width; // of the photograph, in pixels
  int height;
  int found;               // boxes, which may be more than there are faces to report
  std::vector<Face> faces; // at most 30, but for tiles
  bool damaged = false;    // the file is damaged or cut short; what could be read was used
};

} // namespace qorfaces
