// Switches the C locale for as long as a test needs it.
#pragma once

#include <clocale>
#include <string>

namespace qorocv {

class ScopedLocale {
public:
  explicit ScopedLocale(const char* name)
      : previous(std::setlocale(LC_ALL, nullptr)),
        switched(std::setlocale(LC_ALL, name) != nullptr) {}
  ~ScopedLocale() { std::setlocale(LC_ALL, previous.c_str()); }
  ScopedLocale(const ScopedLocale&) = delete;
  ScopedLocale& operator=(const ScopedLocale&) = delete;

  /// Whether the system has the locale. Without it the test would run in the wrong one.
  bool isCurrent() const { return switched; }

private:
  std::string previous;
  bool switched;
};

} // namespace qorocv
