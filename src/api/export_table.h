// What tells the detection exports apart, beside the function that each of them calls.
// findQORFacesDUNInTread02, which fits nothing, shares its function with no other and has no row.
#pragma once

#include "call/detection.h"
#include "call/person_masks.h"

namespace qorocv::exports {

// What each detects with, and what it reports of a face.
constexpr FaceExport findQORFaces{Loading::sharedPair, twoLandmarkRecord};
constexpr FaceExport processImage{Loading::sharedPair, allLandmarkRecord};
constexpr FaceExport findQORFacesInTread01{Loading::cascade, twoLandmarkRecord};
constexpr FaceExport findQORFacesInTreadDebug{Loading::cascadeCombined, twoLandmarkRecord};
constexpr FaceExport findQORFacesHAARInTread_TR02{Loading::cascade, headCentreRecordByColour};
constexpr FaceExport findQORFacesDUNInTread01{Loading::net, twoLandmarkRecord};
constexpr FaceExport findQORFacesDUNInTread01Debug{Loading::net, twoLandmarkRecord};
constexpr FaceExport findQORFacesDUNInTread_TR02{Loading::net, headCentreRecordByColour};
constexpr FaceExport findQORMulitFacesDUNInTread_TR02{Loading::net, headCentreRecordByColour};

// What each detects with, and what it does about the only face of a photograph.
constexpr MaskExport findQORFacesHAARInTreadWithMask02{Loading::cascade, OnlyFace::inCloseUp};
constexpr MaskExport findQORFacesDUNInTreadWithMask01{Loading::net, OnlyFace::likeAnyOther};
constexpr MaskExport findQORFacesDUNInTreadWithMask02{Loading::net, OnlyFace::inCloseUp};

} // namespace qorocv::exports
