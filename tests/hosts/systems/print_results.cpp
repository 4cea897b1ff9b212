// print_results FILE: everything that the detection exports hand out for the real photographs, to be
// compared between systems.
#include "results_file.h"
#include "support/shared_files.h"
#include "support/slot_exports.h"

#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <iostream>
#include <utility>
#include <vector>

namespace qorocv::testing {
namespace {

struct Look {
  const char* photo;
  int maxSide;
};

constexpr Look kLooks[] = {{"astronaut.jpg", 0}, {"astronaut.jpg", 333}, {"couple.jpg", 0},
                           {"couple.jpg", 480},  {"painting.jpg", 0},    {"player.jpg", 0},
                           {"player.jpg", 333},  {"quartet.jpg", 1000},  {"crowd.jpg", 480},
                           {"crowd.jpg", 1000}};

/// The cascade's threads decide in which order it lists the faces: here they are in the order of their
/// boxes.
void sortFaces(CallResults& results) {
  using Face = std::vector<double>;
  std::vector<Face> faces;
  const auto size = static_cast<std::ptrdiff_t>(results.recordSize);
  for (auto face = results.records.begin() + 1; face != results.records.end(); face += size) {
    faces.emplace_back(face, face + size);
  }
  std::sort(faces.begin(), faces.end());
  results.records.resize(1);
  for (const Face& face : faces) {
    results.records.insert(results.records.end(), face.begin(), face.end());
  }
}

/// Whether the host's array had room for every face. Otherwise the order decides which are in it.
bool holdsEveryFace(const CallResults& results) {
  return results.records.size() ==
         1 + static_cast<std::size_t>(results.returned) * results.recordSize;
}

CallResults resultsOf(const SlotExport& slotExport, const Look& look, CallOptions options) {
  Outcome outcome;
  outcome.count = 1;
  outcome.results.assign(QOROCV460_HEAD_CENTRE_RESULTS, 0.0);
  options.maxSide = look.maxSide;
  options.slot = options.modelKind == 1 ? 1 : 2;
  outcome.returned =
      slotExport.call(realPhoto(look.photo).u8string().c_str(), variablesOf(outcome), options);
  CallResults results;
  results.call = std::string(slotExport.name) + ' ' + look.photo + ' ' +
                 std::to_string(look.maxSide) + " kind " + std::to_string(options.modelKind) +
                 " tile " + std::to_string(options.tileCol);
  results.recordSize = slotExport.recordSize;
  results.returned = outcome.returned;
  results.records = records(outcome);
  if (makesMask(slotExport)) {
    results.view = outcome.view.inside();
    results.mask = outcome.mask.inside();
    results.cropMask = outcome.cropMask.inside();
    results.cropBox = outcome.cropBox.inside();
  }
  return results;
}

int run(const char* file) {
  if (initModelsAtPath(realModels().c_str()) != 0) {
    std::cerr << "no models in " << realModels() << std::endl;
    return 1;
  }
  std::vector<CallResults> all;
  for (const Look& look : kLooks) {
    if (!haveRealPhoto(look.photo)) {
      continue;
    }
    for (const SlotExport& slotExport : kSlotExports) {
      for (const int modelKind : {1, 2}) {
        CallOptions options;
        options.modelKind = modelKind;
        if (slotExport.name == std::string(kDunTile.name)) {
          options.gridCols = options.gridRows = 3;
          options.tileCol = options.tileRow = 2;
        }
        if (slotExport.detector == DetectorKind::network || modelKind == 1) {
          CallResults results = resultsOf(slotExport, look, options);
          if (holdsEveryFace(results)) {
            sortFaces(results);
            all.push_back(std::move(results));
          }
        }
      }
    }
  }
  writeResults(file, all);
  std::cout << all.size() << " calls" << std::endl;
  return 0;
}

} // namespace
} // namespace qorocv::testing

int main(int argc, char** argv) {
  return argc == 2 ? qorocv::testing::run(argv[1]) : 2;
}
