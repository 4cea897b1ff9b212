// Reads the files of LBF models. OpenCV's own reader takes most of a second for the usual one, and
// does not survive every damaged one.
#pragma once

#include "faces/lbf_model.h"

#include <memory>
#include <string>

namespace qorocv {

/// The model in the file at `path`, which is in the encoding of the system's narrow functions.
///
/// Null for a file of another layout, which OpenCV may be able to read:
/// - one that does not begin as FacemarkLBF's in YAML do, with %YAML:1.0, --- and stages_n;
/// - one whose mean shape has decimal numbers instead of base64;
/// - one of other than 68 landmarks, of more than 32 stages or 32 trees per landmark, or of trees
///   with less than 2 or more than 8 levels;
/// - one that has more to say behind the model: another key, or that the document ends.
/// Whatever the numbers in its matrices are, they do not matter for that.
/// Blanks, comments and lines without words that OpenCV passes over do not either.
///
/// Throws cv::Exception: StsBadArg where there is no such file, and StsParseError with the path and
/// the line where a file of the known layout is damaged. What is read is complete, finite and of
/// the stated sizes, so that fitting with it touches no memory but its own.
std::shared_ptr<const LbfModel> readLbfModel(const std::string& path);

} // namespace qorocv
