// What hosts do around the library: other directories, other paths, nowhere to write.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <cstring>

namespace qorocv::testing {
namespace {

class Hosts : public ::testing::Test {
protected:
  void SetUp() override {
    writeMadeModels(directory_.path());
    ASSERT_EQ(initModelsAtPath(directory_.asPrefix().c_str()), 0);
    face_ = writePicture(directory_ / "face.png", pictureWithFace());
  }
  void TearDown() override { std::filesystem::current_path("/"); }

  /// Every detection export finds the face that stands at `path`.
  void expectFaceAt(const std::filesystem::path& path) const {
    for (const SlotExport& slotExport : kSlotExports) {
      EXPECT_EQ(detect(slotExport, path).returned, 1) << slotExport.name;
    }
    EXPECT_EQ(detect(findQORFaces, path).returned, 1);
    EXPECT_EQ(detect(processImage, path).returned, 1);
  }
  void expectNothingAt(const std::filesystem::path& path) const {
    for (const SlotExport& slotExport : kSlotExports) {
      const Outcome outcome = detect(slotExport, path);
      EXPECT_EQ(outcome.returned, -1) << slotExport.name;
      EXPECT_EQ(outcome.printed, kUnreadableMessage) << slotExport.name;
      expectNothingTouched(outcome, 1);
    }
  }

  TemporaryDirectory directory_;
  std::filesystem::path face_;
};

TEST_F(Hosts, mayChangeTheirDirectoryAfterPlacingTheModels) {
  const TemporaryDirectory elsewhere;
  std::filesystem::copy_file(face_, elsewhere / "there.png");
  std::filesystem::current_path(elsewhere.path());
  expectFaceAt("there.png");
  expectNothingAt("face.png");
}

TEST_F(Hosts, mayNameAPhotographByFourThousandCharacters) {
  const std::filesystem::path step(std::string(199, 'd'));
  std::filesystem::path deep = directory_.path();
  std::filesystem::current_path(deep); // the system makes no directory by so long a name
  while (deep.native().size() + 1 + step.native().size() < 3980) {
    std::filesystem::create_directory(step);
    std::filesystem::current_path(step);
    deep /= step;
  }
  const std::size_t rest = 4000 - 1 - deep.native().size() - std::strlen(".png");
  const std::string name = std::string(rest, 'f') + ".png";
  std::filesystem::copy_file(face_, name);
  std::filesystem::current_path("/");
  ASSERT_EQ((deep / name).native().size(), 4000U);
  expectFaceAt(deep / name);
  expectNothingAt(deep / std::string(1500, 'f')); // more than the system takes
}

TEST_F(Hosts, areToldOfPathsThatLeadNowhere) {
  expectNothingAt("https://example.org/face.png");
  expectNothingAt("file://" + face_.string());
  expectNothingAt(directory_ / "f\xC3.png"); // no UTF-8
  expectNothingAt(directory_ / "\xFF\xFE");
  expectNothingAt(std::string(100'000, 'x'));
}

// The system keeps everybody from writing there, also the superuser.
TEST_F(Hosts, getTheirRecordsWhereTheCopyCannotBeWritten) {
  const std::filesystem::path full = directory_ / "full.png";
  std::filesystem::create_symlink("/dev/full", full);
  const Outcome records = detect(findQORFaces, face_);
  const Outcome slotRecords = detect(kInTreadDebug, face_);
  for (const std::string& copy : {std::string("/proc/copy.png"), full.string()}) {
    const Outcome shared = detect(findQORFaces, face_, copiedTo(copy));
    EXPECT_TRUE(sameOutputs(shared, records)) << copy;
    CallOptions options;
    options.outputPath = copy;
    EXPECT_TRUE(sameOutputs(detect(kInTreadDebug, face_, options), slotRecords)) << copy;
    EXPECT_EQ(detect(kDun01Debug, face_, options).returned, 1) << copy;
  }
}

} // namespace
} // namespace qorocv::testing
