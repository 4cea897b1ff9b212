// Who may write where while the library is at work, in processes that end in every way.
#include "console.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <thread>

namespace qorfaces {
namespace {

TEST(Console, takesWhatLibrariesPrintToEitherStream) {
  Console console;
  std::printf("to C's output\n");
  std::cout << "to C++'s output\n";
  std::fprintf(stderr, "to C's errors\n");
  std::cerr << "to C++'s errors\n";
  const std::string text = console.takeLibraryText();
  for (const char* const line :
       {"to C's output\n", "to C++'s output\n", "to C's errors\n", "to C++'s errors\n"}) {
    EXPECT_NE(text.find(line), std::string::npos) << text;
  }
}

TEST(Console, takesEachLineOnce) {
  Console console;
  std::fputs("first\n", stderr);
  EXPECT_EQ(console.takeLibraryText(), "first\n");
  std::fputs("second\n", stderr);
  EXPECT_EQ(console.takeLibraryText(), "second\n");
  EXPECT_EQ(console.takeLibraryText(), "");
}

TEST(ConsoleDeathTest, hidesWhatWasPrintedInAProcessThatEndsWell) {
  const auto endWell = [] {
    {
      Console console;
      std::fputs("chatter\n", stderr);
    }
    std::fputs("end\n", stderr);
    std::exit(0);
  };
  EXPECT_EXIT(endWell(), ::testing::ExitedWithCode(0), "^end\r?\n$");
}

TEST(ConsoleDeathTest, showsOurOwnMessagesAtOnce) {
  const auto complain = [] {
    Console console;
    console.complain("no such file");
    std::_Exit(1);
  };
  EXPECT_EXIT(complain(), ::testing::ExitedWithCode(1), "^qorfaces: no such file\r?\n$");
}

TEST(ConsoleDeathTest, showsTheLastWordsOfAProcessThatALibraryEnds) {
  const auto end = [] {
    Console console;
    std::fputs("last words\n", stderr);
    std::exit(5);
  };
  EXPECT_EXIT(end(), ::testing::ExitedWithCode(5), "last words");
}

TEST(ConsoleDeathTest, showsTheLastWordsOfAProcessThatAborts) {
  const auto abort = [] {
    Console console;
    std::fputs("last words\n", stderr);
    std::abort();
  };
  EXPECT_DEATH(abort(), "last words");
}

TEST(ConsoleDeathTest, showsTheExceptionThatAThreadDidNotCatch) {
  const auto throwInThread = [] {
    Console console;
    std::thread([] { throw std::runtime_error("what went wrong"); }).join();
  };
  EXPECT_DEATH(throwInThread(), "what went wrong");
}

TEST(ConsoleDeathTest, showsTheLastWordsOfAProcessThatCrashes) {
  const auto crash = [] {
    Console console;
    std::fputs("last words\n", stderr);
    std::raise(SIGSEGV);
  };
  EXPECT_DEATH(crash(), "last words");
}

#ifndef _WIN32
TEST(ConsoleDeathTest, leavesTheSignalOfACrashAsItWas) {
  const auto crash = [] {
    Console console;
    std::raise(SIGABRT);
  };
  EXPECT_EXIT(crash(), ::testing::KilledBySignal(SIGABRT), "");
}
#endif

} // namespace
} // namespace qorfaces
