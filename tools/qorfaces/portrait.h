// What became of a face's portrait.
#pragma once

#include <string>
#include <vector>

namespace qorfaces {

/// Why a person should look at a portrait.
enum class LookAt {
  topAssumed, // the top of the head was not measured: the head may be higher than it was taken for
  topDoubtful, // it was measured where no head's top is: the mask took something else for the person,
               // or the hair for none
  leavesPhotograph, // a part of the portrait is not in the photograph
  profileDropped,   // the photograph's colour profile is not one of RGB or grey, and is left out
  noHead,           // no head to cut out; there is no portrait
};

struct Portrait {
  std::string file; // UTF-8; empty where there is none
  std::vector<LookAt> lookAt;
};

/// The reason in results for programs.
const char* nameOf(LookAt reason);

/// The reason in words.
const char* wordsOf(LookAt reason);

} // namespace qorfaces
