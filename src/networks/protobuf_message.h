// Files of networks as messages of protobuf, in bytes or in letters. They are read no further than
// they reach, and hold no more than the fields that somebody asks for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace qorocv {

/// A file that is no message. Says what is wrong, and where.
class BadMessage : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

struct ProtobufField {
  std::string name;
  std::string text;                  // of a string, of bytes, or of a word in letters
  std::vector<std::int64_t> numbers; // of integers
  std::size_t count = 0;             // of the numbers, also of those that are counted only
  std::size_t place = 0;             // in a file of bytes: of the value or of what is in a message
  std::vector<ProtobufField> fields; // of a message

  /// The field of the name; null for none. Throws BadMessage for several: protobuf would put them
  /// together or take the last one.
  const ProtobufField* only(std::string_view name) const;
  /// All of the name.
  std::vector<const ProtobufField*> all(std::string_view name) const;
  /// The text of the last field of the name; empty for none.
  std::string textOf(std::string_view name) const;
  /// The numbers of all fields of the name, one behind the other.
  std::vector<std::int64_t> numbersOf(std::string_view name) const;
  /// How many numbers the fields of the name have together.
  std::size_t countOf(std::string_view name) const;
};

/// What a field of a message in bytes holds.
enum class ProtobufKind {
  message,
  text,     // or bytes
  integers, // one, or several packed
  floats,   // counted
  doubles,  // counted
};

/// A field that somebody asks for. `fields` is of a message; null for one that is not looked into.
struct ProtobufSchema {
  std::uint32_t number;
  const char* name;
  ProtobufKind kind;
  const std::vector<ProtobufSchema>* fields = nullptr;
};

/// Throws BadMessage where a length leads out of its message.
ProtobufField readProtobuf(std::string_view bytes, const std::vector<ProtobufSchema>& schema);

/// The same of protobuf's text format. Words, TRUE among them, stay words; integers are numbers, too.
ProtobufField readProtobufText(std::string_view text);

} // namespace qorocv
