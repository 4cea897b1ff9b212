// Any bytes for a photograph: the export that does most with it, on made models.
#include "fuzz_input.h"
#include "make_models/made_models.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <opencv2/core/utils/logger.hpp>

#include <sys/mman.h>
#include <unistd.h>

using namespace qorocv::fuzzing;
using namespace qorocv::testing;

namespace {

/// A photograph in memory only, and models for it.
class Studio {
public:
  Studio() {
    setenv("OPENCV_IO_MAX_IMAGE_PIXELS", "4000000", 1); // beyond it lies only more of the same
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    std::cout.setstate(std::ios::failbit); // every unreadable photograph would be reported there
    writeMadeModels(models_.path());
    require(initModelsAtPath(models_.asPrefix().c_str()) == 0, "models");
  }

  std::string keep(const std::uint8_t* data, std::size_t size) const {
    require(ftruncate(file_, 0) == 0 && pwrite(file_, data, size, 0) == static_cast<ssize_t>(size),
            "a file in memory");
    return "/proc/self/fd/" + std::to_string(file_);
  }

private:
  TemporaryDirectory models_;
  int file_ = memfd_create("photograph", 0);
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Studio studio;
  static Outcome outcome;
  outcome.results.assign(QOROCV460_HEAD_CENTRE_RESULTS + 8, kUntouchedValue);
  outcome.count = 1;
  const std::string photo = studio.keep(data, size);
  CallOptions options;
  options.maxSide = 100;
  try {
    outcome.returned = kDunMask02.call(photo.c_str(), variablesOf(outcome), options);
    require(outcome.returned >= -1 && outcome.returned <= 1, "the made network finds one face");
  } catch (const std::exception&) {
    // OpenCV's own answer to what it cannot work on
  }
  require(outcome.written() <= QOROCV460_HEAD_CENTRE_RESULTS && outcome.view.isUntouchedBehind() &&
              outcome.mask.isUntouchedBehind() && outcome.cropMask.isUntouchedBehind() &&
              outcome.cropBox.isUntouchedBehind(),
          "nothing written behind the arrays");
  return 0;
}
