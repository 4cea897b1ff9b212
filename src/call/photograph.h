// From a photograph's path to a picture of the size that detectors want.
#pragma once

#include "call/host_call.h"

#include <opencv2/core.hpp>

#include <string>

namespace qorocv {

/// Switches the process to the user's locale, in whose encoding local paths are. Not undone.
void adoptUserLocale();

/// Finds a file by its local path, through OpenCV's sample search where the path alone leads
/// nowhere, and reads it as 8-bit BGR. An empty picture, after one line on standard output, where
/// there is no such file or it is no picture; every other error of OpenCV is thrown.
cv::Mat readPhotograph(const std::string& localPath);

/// A call's photograph.
struct Opened {
  /// As read; empty where the call ends here.
  cv::Mat photograph;
  /// What the call then returns: QOROCV460_REJECTED or QOROCV460_UNREADABLE.
  int refusal;
  /// Local path of the annotated copy; empty where the export has none.
  std::string copyPath;
};

/// Checks the call, and touches nothing where it is incomplete; then switches the locale, converts
/// the paths in it and reads the photograph. `outputPath` is UTF-8, null for none.
Opened openPhotograph(const HostCall& call, const char* outputPath = nullptr);

/// Tells the host the size of the photograph.
void reportSize(const cv::Mat& photograph, int* width, int* height);

/// Resizes `picture` in place so that its longer side is `maxSide` pixels, its own length where
/// `maxSide` is below 1; smaller pictures grow. Returns the scale, scaled length / own length. Both
/// new sides are truncated, so the shorter one can be off by a pixel from what rounding would give.
float scaleToMaxSide(cv::Mat& picture, int maxSide);

} // namespace qorocv
