#include "worker_process.h"

#include <boost/asio/write.hpp>
#include <boost/process/args.hpp>
#include <boost/process/env.hpp>
#include <boost/process/environment.hpp>
#include <boost/process/exe.hpp>
#include <boost/process/io.hpp>
#include <istream>
#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/wait.h>
#endif

namespace qorfaces {

namespace process = boost::process;

namespace {

std::filesystem::path ownProgram() {
#ifdef _WIN32
  std::wstring path(32768, L'\0'); // longer ones there are not
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path;
#else
  return std::filesystem::read_symlink("/proc/self/exe");
#endif
}

process::environment workerEnvironment() {
  process::environment environment = boost::this_process::environment();
  environment["OPENCV_FOR_THREADS_NUM"] = "1"; // for a library with an OpenCV of its own
  return environment;
}

/// A pipe that no other worker inherits: one that did would keep it open beyond its end.
process::async_pipe ownPipe(boost::asio::io_context& context) {
  process::async_pipe pipe(context);
#ifndef _WIN32
  for (const int end : {pipe.native_source(), pipe.native_sink()}) {
    fcntl(end, F_SETFD, FD_CLOEXEC);
  }
#endif
  return pipe;
}

} // namespace

WorkerProcess::WorkerProcess(boost::asio::io_context& context, Listener& listener)
    : listener_(listener), in_(ownPipe(context)), out_(ownPipe(context)),
      child_(process::exe = ownProgram().native(), process::args = {"worker"},
             process::std_in<in_, process::std_out> out_, process::std_err > process::null,
             process::env = workerEnvironment()) {
  read();
}

void WorkerProcess::send(const std::string& line) {
  toSend_.push_back(line + "\n");
  write();
}

void WorkerProcess::finish() {
  isFinishing = true;
  if (!isWriting_) {
    in_.close();
  }
}

void WorkerProcess::write() {
  if (isWriting_ || isEnded_) {
    return;
  }
  if (toSend_.empty()) {
    if (isFinishing) {
      in_.close();
    }
    return;
  }
  isWriting_ = true;
  boost::asio::async_write(in_, boost::asio::buffer(toSend_.front()),
                           [this](const boost::system::error_code& error, std::size_t) {
                             isWriting_ = false;
                             toSend_.pop_front();
                             if (!error) { // else its answers end, too
                               write();
                             }
                             tellOfTheEnd();
                           });
}

void WorkerProcess::read() {
  boost::asio::async_read_until(out_, answers_, '\n',
                                [this](const boost::system::error_code& error, std::size_t) {
                                  if (error) {
                                    child_.wait();
                                    isEnded_ = true;
                                    tellOfTheEnd();
                                    return;
                                  }
                                  std::istream stream(&answers_);
                                  std::string line;
                                  std::getline(stream, line);
                                  if (!line.empty() && line.back() == '\r') {
                                    line.pop_back(); // lines end so on Windows
                                  }
                                  listener_.answered(*this, line);
                                  read();
                                });
}

// Once nothing is under way that would come back here.
void WorkerProcess::tellOfTheEnd() {
  if (isEnded_ && !isWriting_) {
    listener_.ended(*this);
  }
}

std::string WorkerProcess::howItEnded() {
#ifndef _WIN32
  const int status = child_.native_exit_code();
  if (WIFSIGNALED(status)) {
    return "it ended by signal " + std::to_string(WTERMSIG(status));
  }
#endif
  return "it ended with code " + std::to_string(child_.exit_code());
}

} // namespace qorfaces
