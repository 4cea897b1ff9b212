// The functions of the library: which of them does what is asked.
#pragma once

#include "records.h"
#include "settings.h"

#include <string>
#include <vector>

namespace qorfaces {

/// What the functions with a person mask fill besides records.
struct Masks {
  std::vector<unsigned char> view = std::vector<unsigned char>(QOROCV460_VIEW_BYTES);
  std::vector<unsigned char> mask = std::vector<unsigned char>(QOROCV460_MASK_BYTES);
  std::vector<unsigned char> cropMask = std::vector<unsigned char>(QOROCV460_MASK_BYTES);
  double cropBox[QOROCV460_CROP_BOX] = {}; // no width: there is no closer mask
};

struct MaskedCall {
  Call call;
  Masks masks;
};

// Tiles are not their concern. They throw std::exception for what the library throws.

/// The call for settings without a mask. It writes the annotated copy but with head centres.
Call callWithoutMask(const std::string& photo, const Settings& settings);

/// The call for settings with a mask. It writes no annotated copy.
MaskedCall callWithMask(const std::string& photo, const Settings& settings);

/// Boxes, nose bridges and chins from a slot, and the annotated copy.
Call callInSlot(const std::string& photo, const Settings& settings);

} // namespace qorfaces
