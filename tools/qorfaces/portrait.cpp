#include "portrait.h"

namespace qorfaces {

const char* nameOf(LookAt reason) {
  switch (reason) {
  case LookAt::topAssumed:
    return "topAssumed";
  case LookAt::topDoubtful:
    return "topDoubtful";
  case LookAt::leavesPhotograph:
    return "leavesPhotograph";
  case LookAt::profileDropped:
    return "profileDropped";
  case LookAt::noHead:
    break;
  }
  return "noHead";
}

const char* wordsOf(LookAt reason) {
  switch (reason) {
  case LookAt::topAssumed:
    return "the top of the head is assumed";
  case LookAt::topDoubtful:
    return "the top of the head is doubtful";
  case LookAt::leavesPhotograph:
    return "leaves the photograph";
  case LookAt::profileDropped:
    return "the colour profile is left out";
  case LookAt::noHead:
    break;
  }
  return "no head to cut out";
}

} // namespace qorfaces
