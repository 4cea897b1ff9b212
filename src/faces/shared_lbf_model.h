// One model for all landmarkers that read the same file.
#pragma once

#include "faces/lbf_model.h"

#include <memory>
#include <string>

namespace qorocv {

/// The model in the file at `path`, as readLbfModel reads it: null for a file of another layout,
/// and cv::Exception for what cannot be read. While somebody holds a model, others get the same one
/// for the same content. The file is read anew, unless it is one whose model is held and has not
/// been changed since it was read.
///
/// Threads may call it side by side; they read one after the other.
std::shared_ptr<const LbfModel> sharedLbfModel(const std::string& path);

} // namespace qorocv
