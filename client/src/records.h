// From the records of one call to the faces in them.
#pragma once

#include <qorocv460/client.h>
#include <vector>

namespace qorocv::client {

/// What a record holds behind the box.
enum class Layout { face, headCentre, landmarks };

/// What one call returns, and the variables that it fills.
struct Records {
  explicit Records(Layout records)
      : layout(records), values(QOROCV460_LANDMARK_RESULTS),
        count(static_cast<int>(values.size())) {}

  Layout layout;
  int found = QOROCV460_UNREADABLE; // boxes
  std::vector<double> values;
  int count;
  int width = 0;
  int height = 0;
};

/// The photograph of a call that could read it. `maxSide` is the call's, and `closeUpTop` the top
/// of the close-up where heads were measured by a closer mask, else 0: from both follows where a
/// head's centre lies whose top was not measured.
Photo photoOf(const Records& records, int maxSide, double closeUpTop);

} // namespace qorocv::client
