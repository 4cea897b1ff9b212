// The OpenCV calls that an export cannot do without, written out plainly and apart from the
// library: what its results are compared with, and its time.
#pragma once

#include <opencv2/dnn.hpp>
#include <opencv2/face.hpp>
#include <opencv2/objdetect.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace qorocv::testing {

struct BareFaces {
  int width = 0;
  int height = 0;
  float scale = 1;
  cv::Mat picture; // scaled
  std::vector<cv::Rect> boxes;
  std::vector<std::vector<cv::Point2f>> landmarks;
};

struct BareDetectors {
  cv::dnn::Net net;
  cv::CascadeClassifier cascade;
  cv::Ptr<cv::face::Facemark> landmarker;
  cv::dnn::Net segmenter; // of loadBare
};

BareDetectors loadBareCascade(const std::string& landmarkModel, const std::string& cascadeModel);
BareDetectors loadBareNetwork(const std::string& landmarkModel, const std::string& description,
                              const std::string& weights);

/// Landmarker, cascade and the network of the kind, from a directory of models under their short
/// names.
BareDetectors loadBare(const std::filesystem::path& models, int modelKind = 1);

BareFaces bareCascade(BareDetectors& detectors, const std::string& photo, int maxSide);
/// The boxes alone, as the SSD network of the kind sees them.
BareFaces bareNetworkBoxes(BareDetectors& detectors, const std::string& photo, int maxSide,
                           int modelKind);

BareFaces bareNetwork(BareDetectors& detectors, const std::string& photo, int maxSide,
                      int modelKind);

/// The OpenCV calls behind the head centres of the faces: the band above each nose bridge, shrunk, its
/// hues compared.
void bareHeadCentres(const BareFaces& faces);

/// The pixel blocks that a host gets.
struct BarePixels {
  std::vector<unsigned char> view = std::vector<unsigned char>(4 * 1000 * 1000);
  std::vector<unsigned char> mask = std::vector<unsigned char>(4 * 192 * 192);
  std::vector<unsigned char> cropMask = std::vector<unsigned char>(4 * 192 * 192);
};

enum class BareFinder { cascade, network };

/// What the exports with a person mask cannot do without: view, mask, landmarks, the mask at the
/// picture's size for the head measures, and, with `closeUp`, the second mask for an only face.
BareFaces bareMasks(BareDetectors& detectors, const std::string& photo, int maxSide,
                    BareFinder finder, bool closeUp, BarePixels& pixels);

/// What an export writes for these faces: the number of sets, then the box and the named landmarks
/// of at most 30 of them. Nothing where there is no set.
std::vector<double> bareRecords(const BareFaces& faces, const std::vector<std::size_t>& landmarks);

} // namespace qorocv::testing
