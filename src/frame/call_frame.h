// The frame that every export which reads a photograph shares, in the order of a call: check,
// locale, path, picture, size, scale.
#pragma once

#include <opencv2/core.hpp>

#include <string>

namespace qorocv {

/// The arguments that every detection export takes, as its host passed them.
struct HostCall {
  const char* imagePath; // UTF-8
  double* results;       // room for 1 + 30 records
  int* resultCount;      // in: at least 1; out: values written, 0 for none
  int maxSide;           // longer side to scale to, in pixels; below 1 keeps the photograph's size
  int* width;            // out: the photograph's columns
  int* height;           // out: the photograph's rows
};

/// What an export returns for a call that it rejects, and for a photograph that it cannot read.
constexpr int kRejectedCall = 0;
constexpr int kUnreadablePhotograph = -1;

/// True where the host gave an array, a count variable and a capacity of at least 1. The size
/// variables are not looked at: the host always gives them.
bool isComplete(const HostCall& call);

/// Switches the process to the user's locale, in whose encoding local paths are. Not undone.
void adoptUserLocale();

/// Finds a file by its local path, through OpenCV's sample search where the path alone leads
/// nowhere, and reads it as 8-bit BGR. An empty picture, after one line on standard output, where
/// there is no such file or it is no picture; every other error of OpenCV is thrown.
cv::Mat readPhotograph(const std::string& localPath);

/// Tells the host the size of the photograph.
void reportSize(const cv::Mat& photograph, int* width, int* height);

/// Resizes `picture` in place so that its longer side is `maxSide` pixels, its own length where
/// `maxSide` is below 1; smaller pictures grow. Returns the scale, scaled length / own length. Both
/// new sides are truncated, so the shorter one can be off by a pixel from what rounding would give.
float scaleToMaxSide(cv::Mat& picture, int maxSide);

} // namespace qorocv
