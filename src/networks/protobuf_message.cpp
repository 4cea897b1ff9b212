#include "networks/protobuf_message.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <utility>

namespace qorocv {

const ProtobufField* ProtobufField::only(std::string_view wanted) const {
  const std::vector<const ProtobufField*> found = all(wanted);
  if (found.size() > 1) {
    throw BadMessage("there is more than one " + std::string(wanted));
  }
  return found.empty() ? nullptr : found.front();
}

std::vector<const ProtobufField*> ProtobufField::all(std::string_view wanted) const {
  std::vector<const ProtobufField*> found;
  for (const ProtobufField& field : fields) {
    if (field.name == wanted) {
      found.push_back(&field);
    }
  }
  return found;
}

std::string ProtobufField::textOf(std::string_view wanted) const {
  const std::vector<const ProtobufField*> found = all(wanted);
  return found.empty() ? std::string() : found.back()->text;
}

std::vector<std::int64_t> ProtobufField::numbersOf(std::string_view wanted) const {
  std::vector<std::int64_t> all;
  for (const ProtobufField& field : fields) {
    if (field.name == wanted) {
      all.insert(all.end(), field.numbers.begin(), field.numbers.end());
    }
  }
  return all;
}

std::size_t ProtobufField::countOf(std::string_view wanted) const {
  std::size_t together = 0;
  for (const ProtobufField& field : fields) {
    together += field.name == wanted ? field.count : 0;
  }
  return together;
}

namespace {

// ---- Bytes

enum WireType : std::uint32_t { varint = 0, fixed64 = 1, delimited = 2, fixed32 = 5 };

class Bytes {
public:
  Bytes(std::string_view bytes, std::size_t place) : bytes_(bytes), place_(place) {}

  bool atEnd() const { return bytes_.empty(); }
  std::size_t place() const { return place_; } // in the file

  [[noreturn]] void refuse(const std::string& what) const {
    throw BadMessage("byte " + std::to_string(place_) + ": " + what);
  }

  std::uint64_t integer() {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 70; shift += 7) {
      const auto byte = static_cast<unsigned char>(take(1).front());
      value |= shift < 64 ? std::uint64_t{byte & 0x7FU} << shift : 0;
      if (byte < 0x80U) {
        return value;
      }
    }
    refuse("a number that does not end");
  }

  std::string_view take(std::uint64_t length) {
    if (length > bytes_.size()) {
      refuse("a length that leads out of its message");
    }
    const std::string_view taken = bytes_.substr(0, length);
    bytes_.remove_prefix(length);
    place_ += length;
    return taken;
  }

  Bytes message() {
    const std::uint64_t length = integer();
    const std::size_t place = place_;
    return {take(length), place};
  }
  std::string_view rest() const { return bytes_; }

private:
  std::string_view bytes_;
  std::size_t place_;
};

void readInto(ProtobufField& message, Bytes bytes, const std::vector<ProtobufSchema>& schema);

void addDelimited(ProtobufField& field, Bytes content, const ProtobufSchema& schema) {
  switch (schema.kind) {
  case ProtobufKind::message:
    if (schema.fields != nullptr) {
      readInto(field, content, *schema.fields);
    }
    return;
  case ProtobufKind::text:
    field.text = content.rest();
    return;
  case ProtobufKind::integers:
    while (!content.atEnd()) {
      field.numbers.push_back(static_cast<std::int64_t>(content.integer()));
    }
    field.count = field.numbers.size();
    return;
  case ProtobufKind::floats:
    field.count = content.rest().size() / 4;
    return;
  case ProtobufKind::doubles:
    field.count = content.rest().size() / 8;
    return;
  }
}

void readInto(ProtobufField& message, Bytes bytes, const std::vector<ProtobufSchema>& schema) {
  while (!bytes.atEnd()) {
    const std::uint64_t key = bytes.integer();
    const auto known = std::find_if(schema.begin(), schema.end(), [&](const ProtobufSchema& field) {
      return field.number == key >> 3U;
    });
    ProtobufField field;
    field.place = bytes.place();
    bool fits = false; // its kind: what does not is no such field for protobuf either
    switch (key & 7U) {
    case varint: {
      const std::uint64_t value = bytes.integer();
      fits = known != schema.end() && known->kind == ProtobufKind::integers;
      field.numbers.assign(1, static_cast<std::int64_t>(value));
      field.count = 1;
      break;
    }
    case fixed32:
      bytes.take(4);
      fits = known != schema.end() && known->kind == ProtobufKind::floats;
      field.count = 1;
      break;
    case fixed64:
      bytes.take(8);
      fits = known != schema.end() && known->kind == ProtobufKind::doubles;
      field.count = 1;
      break;
    case delimited: {
      const Bytes content = bytes.message();
      fits = known != schema.end();
      field.place = content.place();
      if (fits) {
        addDelimited(field, content, *known);
      }
      break;
    }
    default:
      bytes.refuse("a field of no known kind");
    }
    if (fits) {
      field.name = known->name;
      message.fields.push_back(std::move(field));
    }
  }
}

// ---- Letters

constexpr int kMostDepth = 100; // messages within messages; networks have less than ten

class Letters {
public:
  explicit Letters(std::string_view text) : text_(text) {}

  [[noreturn]] void refuse(const std::string& what) const {
    throw BadMessage("line " + std::to_string(line_) + ": " + what);
  }

  /// The next letter behind spaces and comments; 0 at the end.
  char next() {
    for (;;) {
      while (at_ < text_.size() && isSpace(text_[at_])) {
        line_ += text_[at_] == '\n' ? 1 : 0;
        ++at_;
      }
      if (at_ >= text_.size() || text_[at_] != '#') {
        return at_ < text_.size() ? text_[at_] : '\0';
      }
      at_ = std::min(text_.find('\n', at_), text_.size());
    }
  }

  bool takeIf(char letter) {
    if (next() != letter || letter == '\0') {
      return false;
    }
    ++at_;
    return true;
  }

  std::string word() {
    next();
    const std::size_t first = at_;
    while (at_ < text_.size() && !isSpace(text_[at_]) &&
           std::string_view("{}<>[]:,;#\"'").find(text_[at_]) == std::string_view::npos) {
      ++at_;
    }
    if (first == at_) {
      refuse("a word is missing");
    }
    return std::string(text_.substr(first, at_ - first));
  }

  /// A text in quotes, which has begun.
  std::string quoted(char quote) {
    std::string text;
    ++at_;
    while (at_ < text_.size() && text_[at_] != quote && text_[at_] != '\n') {
      text += text_[at_] == '\\' ? escaped() : text_[at_++];
    }
    if (at_ >= text_.size() || text_[at_] != quote) {
      refuse("a text that does not end");
    }
    ++at_;
    return text;
  }

private:
  static bool isSpace(char c) {
    return std::string_view(" \t\r\n\v\f").find(c) != std::string_view::npos;
  }

  /// Of an escape its one byte; of those that stand for several as many as tell it from others.
  char escaped() {
    ++at_;
    if (at_ >= text_.size()) {
      refuse("a text that does not end");
    }
    const auto isOctal = [](char c) { return c >= '0' && c <= '7'; };
    unsigned value = 0;
    if (isOctal(text_[at_])) {
      for (int digits = 0; digits < 3 && at_ < text_.size() && isOctal(text_[at_]); ++digits) {
        value = value * 8 + static_cast<unsigned>(text_[at_++] - '0');
      }
      return static_cast<char>(value);
    }
    if (text_[at_] == 'x' || text_[at_] == 'X') {
      ++at_;
      for (int digits = 0; digits < 2 && at_ < text_.size() &&
                           std::isxdigit(static_cast<unsigned char>(text_[at_])) != 0;
           ++digits) {
        const char digit[] = {text_[at_++], '\0'};
        value = value * 16 + static_cast<unsigned>(std::strtoul(digit, nullptr, 16));
      }
      return static_cast<char>(value);
    }
    return text_[at_++];
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t line_ = 1;
};

void readInto(ProtobufField& message, Letters& letters, char end, int depth);

void readScalar(ProtobufField& field, Letters& letters) {
  if (letters.next() == '"' || letters.next() == '\'') {
    while (letters.next() == '"' || letters.next() == '\'') { // several are one
      field.text += letters.quoted(letters.next());
    }
    return;
  }
  field.text = letters.takeIf('-') ? "-" + letters.word() : letters.word();
  char* end = nullptr;
  errno = 0;
  const long long number = std::strtoll(field.text.c_str(), &end, 0);
  if (*end == '\0' && errno == 0) {
    field.numbers.assign(1, number);
  }
  field.count = 1;
}

void readValue(ProtobufField& message, const std::string& name, Letters& letters, int depth) {
  ProtobufField field;
  field.name = name;
  if (letters.takeIf('{')) {
    readInto(field, letters, '}', depth + 1);
  } else if (letters.takeIf('<')) {
    readInto(field, letters, '>', depth + 1);
  } else {
    readScalar(field, letters);
  }
  message.fields.push_back(std::move(field));
}

void readInto(ProtobufField& message, Letters& letters, char end, int depth) {
  if (depth > kMostDepth) {
    letters.refuse("too many messages in one another");
  }
  while (!letters.takeIf(end)) {
    if (letters.next() == '\0') {
      if (end == '\0') {
        return;
      }
      letters.refuse("a message that does not end");
    }
    const std::string name = letters.word();
    letters.takeIf(':');
    if (letters.takeIf('[')) { // several values
      while (!letters.takeIf(']')) {
        readValue(message, name, letters, depth);
        letters.takeIf(',');
      }
    } else {
      readValue(message, name, letters, depth);
    }
    if (!letters.takeIf(',')) {
      letters.takeIf(';');
    }
  }
}

} // namespace

ProtobufField readProtobuf(std::string_view bytes, const std::vector<ProtobufSchema>& schema) {
  ProtobufField message;
  readInto(message, Bytes(bytes, 0), schema);
  return message;
}

ProtobufField readProtobufText(std::string_view text) {
  ProtobufField message;
  Letters letters(text);
  readInto(message, letters, '\0', 0);
  return message;
}

} // namespace qorocv
