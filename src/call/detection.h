// From a photograph's path to records in the host's array: what the detection exports do. Every
// function here returns the number of boxes found, however many records they gave;
// QOROCV460_REJECTED, with nothing touched, for an incomplete call; QOROCV460_UNREADABLE, with no
// output written, where there is no picture to read. Errors of OpenCV are thrown.
#pragma once

#include "call/host_call.h"
#include "call/records.h"
#include "models/detector_slots.h"

#include <vector>

namespace qorocv {

/// What tells exports apart that share a function: what they detect with, and what they report of a
/// face.
struct FaceExport {
  Loading loading;
  FaceRecord (*record)(const Face& face);
};

/// Finds faces, fits their landmarks and writes records.
int detectFaces(const FaceExport& kind, const HostCall& call, const SlotChoice& choice);

/// The same from where the photograph is read: `photograph` may be a part of it, and then stands
/// for the whole in everything that the call reports.
int detectFacesIn(cv::Mat photograph, const FaceExport& kind, const HostCall& call,
                  const SlotChoice& choice);

/// Finds faces with the network and fits nothing; records hold what the boxes tell.
int detectBoxes(const HostCall& call, const SlotChoice& choice);

/// detectFaces with a cascade, and then shows and keeps the picture: drawn on if the fit succeeded,
/// the landmarks light blue. The count is set before the host sees the picture.
int detectAndAnnotate(const FaceExport& kind, const HostCall& call, const SlotChoice& choice,
                      const AnnotationRequest& request);

/// detectFaces with the network, and then shows and keeps the picture: drawn on if faces were
/// found, the landmarks red. The count is set last of all.
int detectAndAnnotateNet(const FaceExport& kind, const HostCall& call, const SlotChoice& choice,
                         const AnnotationRequest& request);

/// Boxes of the faces in an 8-bit BGR picture, in its pixels and the detector's own order.
std::vector<cv::Rect> findFaces(const Detectors& detectors, const cv::Mat& picture);

} // namespace qorocv
