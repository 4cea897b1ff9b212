// A cascade's file is full of numbers that lead to others: nodes of trees to nodes, leaves and
// features, features to pixels. OpenCV follows them wherever they lead, also out of its arrays.
#pragma once

#include <opencv2/core/persistence.hpp>

namespace qorocv {

/// False for a cascade in whose file some number leads nowhere, as in one with a few wrong bits.
/// True for nodes that OpenCV itself refuses to read, and for cascades of another kind than the
/// Haar cascades that it trains since version 2.4.
bool isSoundCascade(const cv::FileNode& cascade);

} // namespace qorocv
