// The road of every detection export: from a photograph's path to records in the host's array.
#pragma once

#include "frame/call_frame.h"
#include "pipelines/recipes.h"

namespace qorocv {

/// Which slot a host names, and which kind of network it wants there. The shared pair has neither.
struct SlotChoice {
  int slot = 0;
  int modelKind = 0;
};

/// What a host wants to see of a call besides its numbers.
struct AnnotationRequest {
  const char* outputPath =
      nullptr;       // UTF-8; a copy is written there if its local form has two bytes or more
  bool show = false; // in a window, until a key is pressed
};

/// Reads and scales the photograph, finds faces, fits landmarks, annotates and writes records, as
/// the recipe says. Returns the number of boxes found, however many records they gave;
/// kRejectedCall, with nothing touched, for an incomplete call; kUnreadablePhotograph, with no
/// output written, where there is no picture to read. Errors of OpenCV are thrown.
int detectFaces(const Recipe& recipe, const HostCall& call, const SlotChoice& choice = {},
                const AnnotationRequest& request = {});

} // namespace qorocv
