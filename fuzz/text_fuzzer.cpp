// Any bytes for text, in any locale: the conversions of paths.
#include "fuzz_input.h"
#include "platform/platform.h"

#include <clocale>

using namespace qorocv;
using namespace qorocv::fuzzing;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr const char* locales[] = {"C",           "C.UTF-8",       "de_DE.ISO-8859-1",
                                     "ja_JP.eucJP", "zh_CN.GB18030", "zh_TW.BIG5"};
  FuzzInput input(data, size);
  std::setlocale(LC_ALL, locales[input.takeFrom(0, 5)]);
  const std::size_t room = input.take<std::uint8_t>();
  const std::string text = input.rest();
  const std::size_t bytes = std::strlen(text.c_str());

  const std::size_t units = utf16Length(text.c_str());
  require(units >= 1 && units <= bytes + 1, "no more UTF-16 units than bytes");
  const std::string whole = utf8ToLocalePath(text.c_str());
  require(whole.find('\0') == std::string::npos, "no terminator within a path");
  const std::string part = utf8ToLocale(text.c_str(), room);
  require(part.size() < room || part.empty(), "no more bytes than there is room for");
  if (!whole.empty()) {
    require(whole.compare(0, part.size(), part) == 0, "a part of the same text");
  }
  return 0;
}
