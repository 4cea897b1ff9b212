#include "records.h"

#include <algorithm>
#include <cmath>

namespace qorocv::client {

namespace {

Point pointAt(const double* values) {
  return {values[0], values[1]};
}

int sizeOf(Layout layout) {
  switch (layout) {
  case Layout::headCentre:
    return QOROCV460_HEAD_CENTRE_RECORD;
  case Layout::landmarks:
    return QOROCV460_LANDMARK_RECORD;
  case Layout::face:
    break;
  }
  return QOROCV460_FACE_RECORD;
}

// The layouts differ in what follows the box.
Face faceOf(const double* record, Layout layout) {
  Face face{{pointAt(record), pointAt(record + 2)},
            pointAt(record + 4),
            pointAt(record + 6),
            {},
            false,
            {}};
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

// The height of one pixel of the scaled photograph, as a fraction.
double pixelHeight(const Records& records, int maxSide) {
  const int longer = std::max(records.width, records.height);
  const double scale = maxSide > 0 ? static_cast<double>(maxSide) / longer : 1.0;
  return 1.0 / (records.height * scale);
}

} // namespace

Photo photoOf(const Records& records, int maxSide, double closeUpTop) {
  Photo photo{records.width, records.height, records.found, {}};
  const int size = sizeOf(records.layout);
  // Centres lie on whole pixels of the scaled photograph: where they stand in, less than one away.
  const double pixel = pixelHeight(records, maxSide);
  for (int start = 1; start + size <= records.count; start += size) {
    Face face = faceOf(&records.values[static_cast<std::size_t>(start)], records.layout);
    if (face.headCentre) {
      const double standIn = face.noseBridge.y - closeUpTop / 2;
      face.headTopMeasured = std::abs(face.headCentre->y - standIn) > pixel;
    }
    photo.faces.push_back(std::move(face));
  }
  return photo;
}

} // namespace qorocv::client
