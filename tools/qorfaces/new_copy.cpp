#include "new_copy.h"

#include <filesystem>
#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace qorfaces {

namespace {

std::string besideIt(const std::string& goal) {
  const std::filesystem::path place = std::filesystem::u8path(goal);
  const std::string name =
      ".qorfaces-" + std::to_string(std::random_device()()) + place.extension().u8string();
  return (place.parent_path() / std::filesystem::u8path(name)).u8string();
}

} // namespace

NewCopy::NewCopy(std::string goal)
    : goal_(std::move(goal)), path_(goal_.empty() ? std::string() : besideIt(goal_)) {}

NewCopy::~NewCopy() {
  if (!path_.empty()) {
    std::error_code ignored;
    std::filesystem::remove(std::filesystem::u8path(path_), ignored);
  }
}

void NewCopy::putInPlace() const {
  if (goal_.empty()) {
    return;
  }
  std::error_code error;
  std::filesystem::rename(std::filesystem::u8path(path_), std::filesystem::u8path(goal_), error);
  if (error) {
    throw std::runtime_error("cannot write the annotated copy " + goal_);
  }
}

} // namespace qorfaces
