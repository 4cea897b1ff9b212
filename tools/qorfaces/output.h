// What qorfaces prints on standard output. Each format is a file of its own.
#pragma once

#include "analysis.h"

#include <string>

namespace qorfaces {

/// A format. Each function gives the text that is printed next, which may be empty.
class Output {
public:
  Output() = default;
  virtual ~Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  virtual std::string analysed(const std::string& photo, const Analysis& analysis) = 0;
  virtual std::string failed(const std::string& photo, const std::string& error) = 0;
  /// Behind the last photograph.
  virtual std::string end() = 0;
};

} // namespace qorfaces
