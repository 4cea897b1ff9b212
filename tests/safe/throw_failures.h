// Before a test of the nineteen functions: lets it call those of QOROCV460Safe in their place, and see
// failures as the exceptions that they were.
#pragma once

#include "qorocv460/safe.h"

#include <opencv2/core.hpp>

namespace qorocv::testing {

template <auto safeFunction> struct Throwing;

template <typename... Parameters, int (*safeFunction)(Parameters...)>
struct Throwing<safeFunction> {
  static int call(Parameters... arguments) {
    const int returned = safeFunction(arguments...);
    if (returned == QOROCV460_FAILED) {
      throw cv::Exception(cv::Error::StsError, qorocv460_lastError(), "", "", 0);
    }
    return returned;
  }
};

} // namespace qorocv::testing

#define findQORFaces qorocv::testing::Throwing<qorocv460_findQORFaces>::call
#define processImage qorocv::testing::Throwing<qorocv460_processImage>::call
#define showImage qorocv::testing::Throwing<qorocv460_showImage>::call
#define findQORFacesInTread01 qorocv::testing::Throwing<qorocv460_findQORFacesInTread01>::call
#define findQORFacesInTreadDebug qorocv::testing::Throwing<qorocv460_findQORFacesInTreadDebug>::call
#define findQORFacesHAARInTread_TR02                                                               \
  qorocv::testing::Throwing<qorocv460_findQORFacesHAARInTread_TR02>::call
#define findQORFacesDUNInTread01 qorocv::testing::Throwing<qorocv460_findQORFacesDUNInTread01>::call
#define findQORFacesDUNInTread01Debug                                                              \
  qorocv::testing::Throwing<qorocv460_findQORFacesDUNInTread01Debug>::call
#define findQORFacesDUNInTread02 qorocv::testing::Throwing<qorocv460_findQORFacesDUNInTread02>::call
#define findQORFacesDUNInTread_TR02                                                                \
  qorocv::testing::Throwing<qorocv460_findQORFacesDUNInTread_TR02>::call
#define findQORFacesDUNInTreadWithMask01                                                           \
  qorocv::testing::Throwing<qorocv460_findQORFacesDUNInTreadWithMask01>::call
#define findQORFacesDUNInTreadWithMask02                                                           \
  qorocv::testing::Throwing<qorocv460_findQORFacesDUNInTreadWithMask02>::call
#define findQORFacesHAARInTreadWithMask02                                                          \
  qorocv::testing::Throwing<qorocv460_findQORFacesHAARInTreadWithMask02>::call
#define findQORMulitFacesDUNInTread_TR02                                                           \
  qorocv::testing::Throwing<qorocv460_findQORMulitFacesDUNInTread_TR02>::call
