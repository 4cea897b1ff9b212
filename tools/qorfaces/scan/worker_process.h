// One worker, as the supervisor holds it.
#pragma once

#include "photograph_file.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/streambuf.hpp>
#include <boost/process/async_pipe.hpp>
#include <boost/process/child.hpp>
#include <deque>
#include <map>
#include <string>

namespace qorfaces {

class WorkerProcess {
public:
  /// Called by the context's thread, `ended` as the last.
  class Listener {
  public:
    virtual void answered(WorkerProcess& worker, const std::string& line) = 0;
    virtual void ended(WorkerProcess& worker) = 0;

  protected:
    ~Listener() = default;
  };

  /// Starts this very program again. Throws std::system_error where that fails.
  WorkerProcess(boost::asio::io_context& context, Listener& listener);
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;

  /// Sends a line.
  void send(const std::string& line);

  /// Sends no more, upon which the worker ends.
  void finish();

  /// What an ended worker's end looked like, as "it ended by signal 11".
  std::string howItEnded();

  // What the supervisor knows of it.
  int slots = 0; // photographs that it looks at at once
  bool isReady = false;
  bool isAlone = false; // with one photograph that has ended a worker before
  bool isFinishing = false;
  std::map<long, PhotographFile> given; // and not yet answered

private:
  void read();
  void write();
  void tellOfTheEnd();

  Listener& listener_;
  boost::process::async_pipe in_;
  boost::process::async_pipe out_;
  boost::asio::streambuf answers_;
  std::deque<std::string> toSend_;
  bool isWriting_ = false;
  bool isEnded_ = false;
  boost::process::child child_;
};

} // namespace qorfaces
