#include "detector_option.h"

#include <CLI/CLI.hpp>

#include <array>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace qorfaces {

namespace {

constexpr std::array<std::pair<const char*, Detector>, 3> kDetectors{
    {{"ssd", Detector::ssd}, {"ssd-tf", Detector::ssdTf}, {"haar", Detector::haar}}};

} // namespace

const char* nameOf(Detector detector) {
  for (const auto& [name, known] : kDetectors) {
    if (known == detector) {
      return name;
    }
  }
  throw std::logic_error("a detector has no name");
}

std::optional<Detector> detectorOf(const std::string& name) {
  for (const auto& [known, detector] : kDetectors) {
    if (name == known) {
      return detector;
    }
  }
  return std::nullopt;
}

void describeDetector(CLI::App& app, const std::string& help, std::optional<Detector>& detector) {
  std::vector<std::string> names;
  names.reserve(kDetectors.size());
  for (const auto& known : kDetectors) {
    names.emplace_back(known.first);
  }
  app.add_option_function<std::string>(
         "--detector", [&detector](const std::string& name) { detector = detectorOf(name); }, help)
      ->type_name("NAME")
      ->default_str(nameOf(defaultDetector(false)))
      ->check(CLI::IsMember(names));
}

Detector defaultDetector(bool landmarks) {
  return landmarks ? Detector::haar : Detector::ssd;
}

} // namespace qorfaces
