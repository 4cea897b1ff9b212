// A thousand calls of each export leave the resident memory where the tenth left it, within 1 MiB.
#include "bench_support.h"

#include <opencv2/core/utility.hpp>

namespace {

using namespace qorocv::bench;

constexpr double kMostGrowth = 1.0; // MiB

} // namespace

int main() {
  cv::setNumThreads(1);
  const Material material("painting.jpg");
  struct Row {
    std::string name;
    double afterTen;
    double afterThousand;
  };
  std::vector<Row> rows;
  HostMemory memory;
  for (const MeasuredExport& measured : measuredExports(material.photo())) {
    double afterTen = 0;
    for (int call = 1; call <= 1000; ++call) {
      measured.call(memory, 0);
      if (call == 10) {
        afterTen = residentMiB();
      }
    }
    rows.push_back({measured.name, afterTen, residentMiB()});
  }
  bool good = true;
  std::printf("\n%s\n\n%-32s %14s %14s %10s\n", material.label().c_str(), "resident MiB after",
              "10 calls", "1000 calls", "growth");
  for (const Row& row : rows) {
    good = good && row.afterThousand - row.afterTen <= kMostGrowth;
    std::printf("%-32s %14.2f %14.2f %10.2f\n", row.name.c_str(), row.afterTen, row.afterThousand,
                row.afterThousand - row.afterTen);
  }
  std::printf("\n%s\n", good ? "every growth is at most 1 MiB" : "A GROWTH IS ABOVE 1 MiB");
  return good ? 0 : 1;
}
