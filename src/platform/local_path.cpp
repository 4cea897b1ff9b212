#include "platform/platform.h"

namespace qorocv {

std::string utf8ToLocalePath(const char* utf8Text) {
  return utf8ToLocale(utf8Text, localBufferSize(utf16Length(utf8Text)));
}

} // namespace qorocv
