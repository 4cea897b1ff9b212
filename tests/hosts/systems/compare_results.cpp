// compare_results A B: whether two systems hand out the same for the same photographs. Counts and
// boxes are equal; the rest differs by no more than the bounds below. Prints the largest difference
// of each export.
#include "results_file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <map>

namespace {

using namespace qorocv::testing;

// The systems' processors get code of their own from OpenCV, whose sums may differ in the last bits;
// a landmark's last step can then fall to the next leaf of a tree.
constexpr double kLandmarkTolerance = 0.002; // of the photograph's side
constexpr double kViewTolerance = 2;         // of 255
constexpr double kMaskShare = 0.01;          // of a mask's bytes may differ

struct Largest {
  double box = 0;
  double landmark = 0;
  double view = 0;
  double mask = 0;
};

double largestDifference(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b) {
  double largest = a.size() == b.size() ? 0 : 255;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    largest = std::max(largest, std::abs(static_cast<double>(a[i]) - b[i]));
  }
  return largest;
}

double shareOfDifferent(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b) {
  if (a.empty() || a.size() != b.size()) {
    return a.size() == b.size() ? 0 : 1;
  }
  std::size_t different = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    different += a[i] == b[i] ? 0 : 1;
  }
  return static_cast<double>(different) / static_cast<double>(a.size());
}

// False where the calls cannot be compared value by value.
bool compare(const CallResults& a, const CallResults& b, Largest& largest) {
  if (a.call != b.call || a.returned != b.returned || a.records.size() != b.records.size()) {
    std::cout << "DIFFERENT: " << a.call << " found " << a.returned << ", " << b.call << " found "
              << b.returned << std::endl;
    return false;
  }
  for (std::size_t i = 0; i < a.records.size(); ++i) {
    const double difference = std::abs(a.records[i] - b.records[i]);
    const bool isBox = i == 0 || (i - 1) % a.recordSize < 4;
    double& kind = isBox ? largest.box : largest.landmark;
    kind = std::max(kind, difference);
  }
  for (std::size_t i = 0; i < a.cropBox.size(); ++i) {
    largest.box = std::max(largest.box, std::abs(a.cropBox[i] - b.cropBox[i]));
  }
  largest.view = std::max(largest.view, largestDifference(a.view, b.view));
  largest.mask = std::max(
      {largest.mask, shareOfDifferent(a.mask, b.mask), shareOfDifferent(a.cropMask, b.cropMask)});
  return true;
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
  const auto first = readResults(argv[1]);
  const auto second = readResults(argv[2]);
  bool good = !first.empty() && first.size() == second.size();
  std::map<std::string, Largest> exports;
  for (std::size_t i = 0; i < std::min(first.size(), second.size()); ++i) {
    const std::string name = first[i].call.substr(0, first[i].call.find(' '));
    good = compare(first[i], second[i], exports[name]) && good;
  }
  std::printf("%-36s %12s %12s %6s %12s\n", "largest difference", "box", "landmark", "view",
              "mask share");
  for (const auto& [name, largest] : exports) {
    std::printf("%-36s %12.3g %12.3g %6.0f %12.3g\n", name.c_str(), largest.box, largest.landmark,
                largest.view, largest.mask);
    good = good && largest.box == 0 && largest.landmark <= kLandmarkTolerance &&
           largest.view <= kViewTolerance && largest.mask <= kMaskShare;
  }
  std::printf("%zu calls, %s\n", first.size(), good ? "within bounds" : "BEYOND BOUNDS");
  return good ? 0 : 1;
}
