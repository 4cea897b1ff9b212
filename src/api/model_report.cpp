#include "api/model_report.h"

#include <cstdlib>
#include <iostream>

namespace qorocv {

void writeModelReport(const ModelRegistry& models, const std::filesystem::path& library) {
  std::ofstream report = createReport();
  if (!report.good()) {
    std::cerr << "Uh oh, SomeText.txt could not be opened for writing!" << std::endl;
    // Hosts count on never running on without their report.
    std::exit(1);
  }
  // Readers of the report count lines: an address, two empty lines, six paths, the first path twice
  // more.
  const void* const address = library.c_str();
  report << address << std::endl << std::endl << std::endl;
  for (std::size_t i = 0; i < kModelsBesideLibrary; ++i) {
    report << models.path(static_cast<Model>(i)) << std::endl;
  }
  const std::string& first = models.path(Model::caffeDescription);
  report << first << std::endl << first << std::endl;
}

} // namespace qorocv
