// Model files that are missing or damaged. Loading them throws or gives a model that finds what it
// finds, and good files work at the next call.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <ostream>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qorocv::testing {
namespace {

/// Flips of every model, each in another place.
int numberOfFlips() {
  const char* const wanted = std::getenv("QOROCV460_MODEL_FLIPS");
  return wanted != nullptr ? std::atoi(wanted) : 60;
}

struct Model {
  const char* file;
  SlotExport user; // an export that needs it
  int modelKind;
  bool keepsAFailedLoad; // a slot keeps a landmarker whose model could not be read
};

void PrintTo(const Model& model, std::ostream* out) {
  *out << model.file;
}

const Model kModels[] = {
    {kMadeCaffeText, kDun01, 1, false},        {kMadeCaffeWeights, kDun01, 1, false},
    {kMadeTensorflowText, kDun01, 2, false},   {kMadeTensorflowWeights, kDun01, 2, false},
    {kMadeLandmarks, kInTread01, 1, true},     {kMadeCascade, kInTread01, 1, false},
    {kMadeSegmentation, kDunMask02, 1, false},
};

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void write(const std::filesystem::path& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

// How a call in a process of its own went.
enum Ending { worked = 0, threw = 10, gaveAnythingElse = 11, nextCallFailed = 12 };

bool survived(int ending) {
  return ending == worked || ending == threw || ending == gaveAnythingElse;
}

class DamagedModels : public ::testing::TestWithParam<Model> {
protected:
  void SetUp() override {
    writeMadeModels(directory_.path());
    photo_ = writePicture(directory_ / "face.png", pictureWithFace());
    good_ = contentOf(model());
    ASSERT_FALSE(good_.empty());
  }

  std::filesystem::path model() const { return directory_ / GetParam().file; }

  std::vector<double> resultsIn(int slot) const {
    CallOptions options;
    options.slot = slot;
    options.modelKind = GetParam().modelKind;
    const Outcome outcome = detect(GetParam().user, photo_, options);
    return outcome.returned == 1 && outcome.count > 0 ? records(outcome) : std::vector<double>();
  }

  /// The library is used in child processes only: a slot keeps its models as long as its process.
  static int returnedInChild(const std::function<int()>& body) {
    const pid_t child = fork();
    if (child == 0) {
      freopen("/dev/null", "w", stderr);
      _exit(body());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

  enum class Then { sameSlotWorks, sameSlotMayKeepIt };

  /// How a call goes after damage to the model. A call with the good model follows, in a fresh slot
  /// and, where nothing of the bad one is kept, in the same.
  int endingAfter(const std::function<void()>& damage, Then then) const {
    return returnedInChild([&] {
      initModelsAtPath(directory_.asPrefix().c_str());
      damage();
      if (::testing::Test::HasFailure()) {
        return static_cast<int>(nextCallFailed);
      }
      int ending = gaveAnythingElse;
      try {
        ending = resultsIn(1).empty() ? gaveAnythingElse : worked;
      } catch (const std::exception&) {
        ending = threw;
      }
      std::filesystem::remove(model());
      write(model(), good_);
      try {
        const bool freshSlotWorks = !resultsIn(2).empty();
        const bool sameSlotWorks = then == Then::sameSlotMayKeepIt || resultsIn(1) == resultsIn(2);
        return freshSlotWorks && sameSlotWorks ? ending : nextCallFailed;
      } catch (const std::exception&) {
        return static_cast<int>(nextCallFailed);
      }
    });
  }

  /// With `content` for the model, or with none where it is null.
  int endingWith(const std::string* content, Then then) const {
    return endingAfter(
        [&] {
          if (content == nullptr) {
            std::filesystem::remove(model());
          } else {
            write(model(), *content);
          }
        },
        then);
  }

  TemporaryDirectory directory_;
  std::filesystem::path photo_;
  std::string good_;
};

TEST_P(DamagedModels, thatAreMissingOrEmptyThrow) {
  EXPECT_EQ(endingWith(nullptr,
                       GetParam().keepsAFailedLoad ? Then::sameSlotMayKeepIt : Then::sameSlotWorks),
            threw);
  const std::string empty; // weights of a network, for one, can be read from an empty file
  EXPECT_EQ(endingWith(&empty, Then::sameSlotMayKeepIt), threw);
}

TEST_P(DamagedModels, thatAreNamedPipesThrow) {
  EXPECT_EQ(endingAfter(
                [&] {
                  alarm(60); // a call that waits for a writer never returns
                  std::filesystem::remove(model());
                  ASSERT_EQ(mkfifo(model().c_str(), 0600), 0);
                  ASSERT_NE(initModelsAtPath(directory_.asPrefix().c_str()), 0);
                },
                GetParam().keepsAFailedLoad ? Then::sameSlotMayKeepIt : Then::sameSlotWorks),
            threw);
}

TEST_P(DamagedModels, thatAreDirectoriesAreNamed) {
  EXPECT_EQ(returnedInChild([&] {
              std::filesystem::remove(model());
              std::filesystem::create_directory(model());
              initModelsAtPath(directory_.asPrefix().c_str());
              try {
                resultsIn(1);
              } catch (const cv::Exception& error) {
                const std::string text = model().string() + " is a directory";
                return error.err.find(text) == 0 ? threw : gaveAnythingElse;
              } catch (const std::exception&) {
                return gaveAnythingElse;
              }
              return gaveAnythingElse;
            }),
            threw);
}

TEST_P(DamagedModels, thatAreCutShortThrowOrGiveWhatIsLeft) {
  std::map<int, int> endings;
  for (std::size_t twentieth = 1; twentieth < 20; ++twentieth) {
    const std::string cut = good_.substr(0, good_.size() * twentieth / 20);
    const int ending = endingWith(&cut, Then::sameSlotMayKeepIt);
    EXPECT_TRUE(survived(ending)) << twentieth << "/20: " << ending;
    ++endings[ending];
  }
  EXPECT_GT(endings[threw], 0);
}

TEST_P(DamagedModels, inEachOthersPlaceThrow) {
  for (const Model& other : kModels) {
    const std::string content = contentOf(directory_ / other.file);
    if (content != good_) {
      const int ending = endingWith(&content, Then::sameSlotMayKeepIt);
      EXPECT_EQ(ending, threw) << other.file;
    }
  }
}

TEST_P(DamagedModels, withBitsTurnedOverThrowOrGiveWhatTheyFind) {
  std::mt19937 random(460);
  std::map<int, int> endings;
  for (int i = 0; i < numberOfFlips(); ++i) {
    std::string flipped = good_;
    const std::size_t at = random() % flipped.size();
    const unsigned bit = random() % 8;
    flipped[at] = static_cast<char>(static_cast<unsigned char>(flipped[at]) ^ (1U << bit));
    const int ending = endingWith(&flipped, Then::sameSlotMayKeepIt);
    EXPECT_TRUE(survived(ending)) << "byte " << at << " bit " << bit << ": " << ending;
    ++endings[ending];
  }
  std::cout << endings[worked] << " found the face, " << endings[gaveAnythingElse]
            << " something else, " << endings[threw] << " thrown" << std::endl;
}

std::string nameWithoutExtension(const ::testing::TestParamInfo<Model>& model) {
  return std::filesystem::path(model.param.file).stem().string();
}
INSTANTIATE_TEST_SUITE_P(Files, DamagedModels, ::testing::ValuesIn(kModels), nameWithoutExtension);

} // namespace
} // namespace qorocv::testing
