// damage_models MODELS/ NUMBER COUNT [FIRST]: makes COUNT damaged forms of a model, 1 to 7, and has
// the library find a face with each, in a process of its own. Says how the calls ended; ends with 1
// where one ended its process, took more than 2 GiB or more than 20 seconds of the processor.
// MODELS/ holds the seven files under their short names; "made" stands for made models.
#include "hardening/model_mutations.h"
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/shared_files.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <opencv2/core/utility.hpp>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <string>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qorocv::testing {
namespace {

struct Use {
  const char* file;
  SlotExport user; // reads as little else as it can
  int modelKind;
};

const Use kUses[] = {
    {kMadeCaffeText, kDun02, kCaffe},           {kMadeCaffeWeights, kDun02, kCaffe},
    {kMadeTensorflowText, kDun02, kTensorflow}, {kMadeTensorflowWeights, kDun02, kTensorflow},
    {kMadeLandmarks, kInTread01, kCaffe},       {kMadeCascade, kInTread01, kCaffe},
    {kMadeSegmentation, kDunMask02, kCaffe},
};

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

enum Ending { worked = 0, threw = 10, gaveAnythingElse = 11 };

constexpr rlim_t kSeconds = 20;
constexpr rlim_t kBytes = rlim_t{2} << 30U;

[[noreturn]] void findIn(const std::filesystem::path& photo, const Use& use, bool quiet) {
  const rlimit seconds{kSeconds, kSeconds};
  setrlimit(RLIMIT_CPU, &seconds);
  const rlimit noCore{0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
  const rlimit bytes{2 * kBytes, 2 * kBytes};
  setrlimit(RLIMIT_AS, &bytes); // the machine's, before it is anybody's
  if (quiet) {
    std::freopen("/dev/null", "w", stderr);
  }
  cv::setNumThreads(1);
  try {
    CallOptions options;
    options.modelKind = use.modelKind;
    options.maxSide = 300;
    const int found = detect(use.user, photo, options).returned;
    _exit(found > 0 ? worked : gaveAnythingElse);
  } catch (const std::exception& error) {
    if (!quiet) {
      std::cerr << error.what() << std::endl;
    }
    _exit(threw);
  }
}

int run(const std::filesystem::path& models, int number, std::uint32_t count, std::uint32_t first) {
  const Use& use = kUses[number - 1];
  const TemporaryDirectory directory;
  writeMadeModels(directory.path()); // those that matter little here
  for (const Use& other : kUses) {
    if (models != "made" && other.modelKind == use.modelKind && other.user.name == use.user.name) {
      std::filesystem::remove(directory / other.file);
      std::filesystem::copy_file(models / other.file, directory / other.file);
    }
  }
  const std::filesystem::path model = directory / use.file;
  const std::filesystem::path photo = writePicture(directory / "face.png", pictureWithFace());
  initModelsAtPath(directory.asPrefix().c_str());
  const ModelMutations mutations(contentOf(model));
  const bool quiet = std::getenv("DAMAGE_MODELS_LOUD") == nullptr;

  std::map<int, std::uint32_t> endings;
  std::uint32_t bad = 0;
  long most = 0;
  for (std::uint32_t i = first; i < first + count; ++i) {
    std::filesystem::remove(model);
    std::ofstream(model, std::ios::binary) << mutations.damaged(i);
    const pid_t child = fork();
    if (child == 0) {
      findIn(photo, use, quiet);
    }
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    const int ending = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    ++endings[ending];
    most = std::max(most, usage.ru_maxrss);
    const bool large = usage.ru_maxrss > static_cast<long>(kBytes >> 10U);
    if ((ending != worked && ending != threw && ending != gaveAnythingElse) || large) {
      ++bad;
      std::cout << use.file << " damage " << i << ": ended with " << ending << ", "
                << usage.ru_maxrss / 1024 << " MiB, " << usage.ru_utime.tv_sec << " s" << std::endl;
    }
  }
  std::cout << use.file << ": " << count << " damaged, " << endings[worked] << " found a face, "
            << endings[gaveAnythingElse] << " something else, " << endings[threw] << " threw, "
            << bad << " ended badly; at most " << most / 1024 << " MiB" << std::endl;
  return bad == 0 ? 0 : 1;
}

} // namespace
} // namespace qorocv::testing

int main(int argc, char** argv) {
  if (argc < 4) {
    std::cerr << "usage: damage_models MODELS/ NUMBER COUNT [FIRST]\n";
    return 2;
  }
  return qorocv::testing::run(argv[1], std::atoi(argv[2]),
                              static_cast<std::uint32_t>(std::atoi(argv[3])),
                              argc > 4 ? static_cast<std::uint32_t>(std::atoi(argv[4])) : 0);
}
