// Any bytes for a photograph: the export that does most with it, on made models.
#include "fuzz_input.h"
#include "make_models/made_models.h"
#include "memory_file.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <opencv2/core/utils/logger.hpp>

using namespace qorocv::fuzzing;
using namespace qorocv::testing;

namespace {

/// Models, and quiet.
class Studio {
public:
  Studio() {
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    std::cout.setstate(std::ios::failbit); // every unreadable photograph would be reported there
    writeMadeModels(models_.path());
    require(initModelsAtPath(models_.asPrefix().c_str()) == 0, "models");
  }

private:
  TemporaryDirectory models_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Studio studio;
  static Outcome outcome;
  outcome.results.assign(QOROCV460_HEAD_CENTRE_RESULTS + 8, kUntouchedValue);
  outcome.count = 1;
  static const MemoryFile photo;
  photo.keep(data, size);
  CallOptions options;
  options.maxSide = 100;
  try {
    outcome.returned = kDunMask02.call(photo.path().c_str(), variablesOf(outcome), options);
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
