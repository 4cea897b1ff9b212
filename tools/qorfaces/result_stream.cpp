#include "result_stream.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace qorfaces {

namespace {

constexpr int kOutput = 1;
constexpr int kErrors = 2;

#ifdef _WIN32
std::FILE* copyOfOutput() {
  return _fdopen(_dup(kOutput), "w");
}
void sendOutputToErrors() {
  _dup2(kErrors, kOutput);
}
#else
std::FILE* copyOfOutput() {
  return fdopen(dup(kOutput), "w");
}
void sendOutputToErrors() {
  dup2(kErrors, kOutput);
}
#endif

} // namespace

ResultStream::ResultStream() : file_(copyOfOutput(), &std::fclose) {
  sendOutputToErrors();
}

bool ResultStream::print(const std::string& text) {
  return file_ && std::fputs(text.c_str(), file_.get()) >= 0 && std::fflush(file_.get()) == 0;
}

} // namespace qorfaces
