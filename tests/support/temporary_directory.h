// A directory of the test's own, gone when the test ends.
#pragma once

#include <filesystem>
#include <random>
#include <string>

namespace qorocv::testing {

class TemporaryDirectory {
public:
  TemporaryDirectory()
      : path_(std::filesystem::temp_directory_path() /
              ("qorocv460-" + std::to_string(std::random_device{}()) + "-" +
               std::to_string(std::random_device{}()))) {
    std::filesystem::create_directories(path_);
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

  /// With the separator at its end that initModelsAtPath wants.
  std::string asPrefix() const { return (path_ / "").string(); }

private:
  std::filesystem::path path_;
};

} // namespace qorocv::testing
