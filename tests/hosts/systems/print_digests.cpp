// print_digests [--made]: a line for each call of each export on the real photographs, or on made pictures with made
// models, with a digest of everything that the call gave its host, to the bit: outputs, what it left untouched,
// what it printed, the picture it drew.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/shared_files.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace qorocv::testing {
namespace {

constexpr const char* kPhotos[] = {"astronaut.jpg", "couple.jpg", "painting.jpg",
                                   "player.jpg",    "crowd.jpg",  "quartet.jpg"};
constexpr int kMaxSides[] = {0, 333, 1000};

/// FNV-1a, of 64 bits.
class Digest {
public:
  template <typename Value> void add(const std::vector<Value>& values) {
    addBytes(reinterpret_cast<const unsigned char*>(values.data()), values.size() * sizeof(Value));
  }
  void add(const std::string& text) {
    addBytes(reinterpret_cast<const unsigned char*>(text.data()), text.size());
  }
  std::uint64_t value() const { return value_; }

private:
  void addBytes(const unsigned char* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      value_ = (value_ ^ bytes[i]) * 0x100000001B3U;
    }
  }

  std::uint64_t value_ = 0xCBF29CE484222325U;
};

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::uint64_t digestOf(const Outcome& outcome, const std::string& copy) {
  Digest digest;
  digest.add(std::vector<int>{outcome.returned, outcome.count, outcome.width, outcome.height,
                              outcome.tileLeft, outcome.tileTop, outcome.tileWidth,
                              outcome.tileHeight});
  digest.add(outcome.results);
  digest.add(outcome.view.inside());
  digest.add(outcome.mask.inside());
  digest.add(outcome.cropMask.inside());
  digest.add(outcome.cropBox.inside());
  digest.add(outcome.printed);
  digest.add(copy);
  return digest.value();
}

/// `detection` is called with the options that it is given, which have a place for the picture.
template <typename Detection>
void print(const char* name, const std::string& photo, CallOptions options,
           const Detection& detection) {
  const TemporaryDirectory directory;
  const std::filesystem::path copy = directory / "drawn.png";
  const Outcome outcome = detection(copiedTo(copy, options));
  std::printf("%s %s %d kind %d: %d found, %zu values, %016llx\n", name, photo.c_str(),
              options.maxSide, options.modelKind, outcome.returned, outcome.written(),
              static_cast<unsigned long long>(digestOf(outcome, contentOf(copy))));
}

void printPhoto(const std::filesystem::path& path, int maxSide) {
  const std::string photo = path.filename().string();
  for (const auto& [name, detection] :
       {std::pair{"findQORFaces", findQORFaces}, std::pair{"processImage", processImage}}) {
    print(name, photo, scaledTo(maxSide),
          [&](const CallOptions& options) { return detect(detection, path, options); });
  }
  for (const SlotExport& slotExport : kSlotExports) {
    for (const int modelKind : {kCaffe, kTensorflow}) {
      if (slotExport.detector == DetectorKind::cascade && modelKind != kCaffe) {
        continue;
      }
      CallOptions options = ofKind(modelKind, inSlot(modelKind, scaledTo(maxSide)));
      if (slotExport.name == std::string(kDunTile.name)) {
        options = inColumn(2, Of{3}, inRow(2, Of{3}, options));
      }
      print(slotExport.name, photo, options,
            [&](const CallOptions& given) { return detect(slotExport, path, given); });
    }
  }
}

std::vector<std::filesystem::path> realPhotos() {
  std::vector<std::filesystem::path> photos;
  for (const char* photo : kPhotos) {
    if (haveRealPhoto(photo)) {
      photos.push_back(realPhoto(photo));
    }
  }
  return photos;
}

/// Without a face, with one, with two of different sizes, and with more than records have room for.
std::vector<std::filesystem::path> madePictures(const std::filesystem::path& directory) {
  const auto two = pictureWithMarks({700, 450}, {{40, 60, 120, 120}, {320, 90, 300, 300}});
  return {writePicture(directory / "none.png", texturedPicture({320, 240})),
          writePicture(directory / "one.png", pictureWithFace()),
          writePicture(directory / "two.png", two),
          writePicture(directory / "crowd.png", pictureWithGrid(35))};
}

int run(const std::string& models, const std::vector<std::filesystem::path>& photos) {
  if (initModelsAtPath(models.c_str()) != 0) {
    std::cerr << "no models in " << models << std::endl;
    return 1;
  }
  for (const std::filesystem::path& photo : photos) {
    for (const int maxSide : kMaxSides) {
      printPhoto(photo, maxSide);
    }
  }
  std::vector<double> values(QOROCV460_TEST_VALUES, kUntouchedValue);
  int count = 0;
  Digest digest;
  testPass(values.data(), &count);
  digest.add(values);
  std::printf("testPass: %d values, %016llx\n", count,
              static_cast<unsigned long long>(digest.value()));
  return 0;
}

} // namespace
} // namespace qorocv::testing

int main(int argc, char** argv) {
  using namespace qorocv::testing;
  if (argc < 2) {
    return run(realModels(), realPhotos());
  }
  const TemporaryDirectory directory;
  writeMadeModels(directory.path());
  return std::string(argv[1]) == "--made"
             ? run(directory.path().string() + "/", madePictures(directory.path()))
             : 2;
}
