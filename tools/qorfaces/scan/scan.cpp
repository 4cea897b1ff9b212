#include "scan.h"

#include "export.h"
#include "journal.h"
#include "pictures.h"
#include "report/report.h"
#include "shards.h"
#include "supervisor.h"

#include <csignal>
#include <iostream>

namespace qorfaces {

namespace {

// A file that grows beyond what the user may write is an error like a full disk, and no reason to
// end at once.
void takeFileLimitsAsErrors() {
#ifdef SIGXFSZ
  std::signal(SIGXFSZ, SIG_IGN);
#endif
#ifdef SIGPIPE
  std::signal(SIGPIPE, SIG_IGN); // a worker's end is seen where its answers end
#endif
}

} // namespace

ExitCode scan(ScanOptions options) {
  takeFileLimitsAsErrors();
  RunFolder folder = RunFolder::forScan(options.out, options.settings, options.shard);
  folder.describeAsBegun();
  // Its pictures are none of the photographs.
  options.inputs.leftOut = options.out;
  SupervisionResult result;
  removeUnfinishedPictures(folder.path());
  {
    if (options.retryFailed) {
      dropFailed(folder.journal());
    }
    KnownPhotographs known;
    Journal journal(folder.journal(), known);
    if (journal.strangeLines() > 0) {
      std::cerr << "qorfaces: " << journal.strangeLines() << " damaged lines in "
                << textOf(folder.journal()) << " are left out; their photographs are done again\n";
    }
    result = Supervisor(options, journal, known).run();
  }
  removeUnfinishedPictures(folder.path());
  if (result.code != allRead) {
    return result.code;
  }
  putInOrder(folder.journal());
  folder.describeAsFinished(result.unread);
  const Counts counts = exportRun(folder);
  if (options.settings.thumbnails) {
    writeReport(folder.path());
  }
  if (!options.quiet) {
    std::cerr << "qorfaces: " << inWords(counts) << "; " << textOf(folder.path()) << '\n';
  }
  return counts.failed > 0 || !result.unread.empty() ? someFailed : allRead;
}

} // namespace qorfaces
