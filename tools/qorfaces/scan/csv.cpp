#include "csv.h"

namespace qorfaces {

namespace {

bool looksLikeAFormula(const std::string& text) {
  return !text.empty() && std::string("=+-@\t\r").find(text.front()) != std::string::npos;
}

std::string cell(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) {
    return text;
  }
  std::string quoted = "\"";
  for (const char letter : text) {
    quoted += letter;
    if (letter == '"') {
      quoted += '"';
    }
  }
  return quoted + '"';
}

} // namespace

std::string harmlessText(const std::string& text) {
  return looksLikeAFormula(text) ? "'" + text : text;
}

std::string harmlessName(const std::string& name) {
  return looksLikeAFormula(name) ? "./" + name : name;
}

std::string csvRecord(const std::vector<std::string>& cells) {
  std::string record;
  for (const std::string& text : cells) {
    record += cell(text) + ",";
  }
  record.pop_back();
  return record + "\r\n";
}

} // namespace qorfaces
