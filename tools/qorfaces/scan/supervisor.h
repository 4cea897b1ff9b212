// The process that gives photographs to workers and writes down what they answer.
#pragma once

#include "exit_code.h"

#include <memory>
#include <set>
#include <string>

namespace qorfaces {

class Journal;
class KnownPhotographs;
struct ScanOptions;

struct SupervisionResult {
  ExitCode code = allRead;      // interrupted, modelsMissing or allRead
  std::set<std::string> unread; // folders and lists, with the reason
};

class Supervisor {
public:
  Supervisor(const ScanOptions& options, Journal& journal, KnownPhotographs& known);
  ~Supervisor();
  Supervisor(const Supervisor&) = delete;
  Supervisor& operator=(const Supervisor&) = delete;

  /// Until every photograph is done, or the user ends it. Throws std::runtime_error with a text for
  /// the user where it cannot go on; what was done until then stands in the journal.
  SupervisionResult run();

private:
  class Work;
  std::unique_ptr<Work> work_;
};

} // namespace qorfaces
