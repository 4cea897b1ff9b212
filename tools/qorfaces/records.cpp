#include "records.h"

namespace qorfaces {

namespace {

Point pointAt(const double* values) {
  return {values[0], values[1]};
}

int recordSize(Layout layout) {
  switch (layout) {
  case Layout::headCentre:
    return QOROCV460_HEAD_CENTRE_RECORD;
  case Layout::landmarks:
    return QOROCV460_LANDMARK_RECORD;
  case Layout::plain:
    break;
  }
  return QOROCV460_FACE_RECORD;
}

// The layouts differ in what follows the box.
Face faceOf(const double* record, Layout layout) {
  Face face{pointAt(record), pointAt(record + 2), pointAt(record + 4), pointAt(record + 6), {}, {}};
  if (layout == Layout::headCentre) {
    face.headCentre = pointAt(record + 8);
  }
  if (layout == Layout::landmarks) {
    for (int value = 4; value < QOROCV460_LANDMARK_RECORD; value += 2) {
      face.landmarks.push_back(pointAt(record + value));
    }
    face.noseBridge = face.landmarks[QOROCV460_NOSE_BRIDGE];
    face.chin = face.landmarks[QOROCV460_CHIN];
  }
  return face;
}

} // namespace

std::vector<Face> facesOf(const Call& call, Layout layout) {
  const int size = recordSize(layout);
  std::vector<Face> faces;
  for (int start = 1; start + size <= call.count; start += size) {
    faces.push_back(faceOf(&call.results[static_cast<std::size_t>(start)], layout));
  }
  return faces;
}

} // namespace qorfaces
