#include "console.h"

#include "descriptors.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#include <sanitizer/common_interface_defs.h>
#endif

namespace qorfaces {

namespace {

constexpr int kOutput = 1;
constexpr int kErrors = 2;

// Of the only console. Plain numbers, since a process that ends in the middle of something may do
// no more than read them.
int theOutput = kNoDescriptor;
int theErrors = kNoDescriptor;
int theLibraryText = kNoDescriptor;

void endCapture() {
  redirect(theOutput, kOutput);
  redirect(theErrors, kErrors);
  for (int* const descriptor : {&theOutput, &theErrors, &theLibraryText}) {
    closeDescriptor(*descriptor);
    *descriptor = kNoDescriptor;
  }
}

void showLastWords() {
  if (theErrors == kNoDescriptor) {
    return;
  }
  char part[4096];
  rewindDescriptor(theLibraryText);
  for (int size = 0; (size = readSome(theLibraryText, part, sizeof part)) > 0;) {
    writeAll(theErrors, part, static_cast<std::size_t>(size));
  }
  redirect(theErrors, kOutput); // results alone belong to standard output
  redirect(theErrors, kErrors);
  theErrors = kNoDescriptor;
}

void onCrash(int signal) {
  showLastWords();
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void watchForTheEnd() {
  static bool watching = false;
  if (watching) {
    return;
  }
  watching = true;
  std::atexit(showLastWords);
  std::signal(SIGABRT, onCrash);
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  __sanitizer_set_death_callback(showLastWords); // after its report of any other crash
#else
  std::signal(SIGSEGV, onCrash);
  std::signal(SIGFPE, onCrash);
  std::signal(SIGILL, onCrash);
#ifdef SIGBUS
  std::signal(SIGBUS, onCrash);
#endif
#endif
}

} // namespace

Console::Console() {
  std::fflush(nullptr);
  theOutput = duplicate(kOutput);
  theErrors = duplicate(kErrors);
  theLibraryText = openTemporary();
  watchForTheEnd();
  const int elsewhere = theLibraryText == kNoDescriptor ? theErrors : theLibraryText;
  redirect(elsewhere, kOutput);
  redirect(elsewhere, kErrors);
}

Console::~Console() {
  std::fflush(nullptr);
  endCapture();
}

bool Console::print(const std::string& results) {
  return writeAll(theOutput, results.data(), results.size());
}

void Console::complain(const std::string& message) {
  show("qorfaces: " + message + "\n");
}

void Console::show(const std::string& libraryText) {
  writeAll(theErrors, libraryText.data(), libraryText.size());
}

bool Console::hasLibraryText() const {
  return sizeOf(theLibraryText) > 0;
}

std::string Console::takeLibraryText() {
  std::fflush(nullptr);
  rewindDescriptor(theLibraryText);
  std::string text;
  char part[4096];
  for (int size = 0; (size = readSome(theLibraryText, part, sizeof part)) > 0;) {
    text.append(part, static_cast<std::size_t>(size));
  }
  emptyDescriptor(theLibraryText);
  return text;
}

} // namespace qorfaces
