// File descriptors, whose functions have other names on every system. A crash handler may call all
// but openTemporary and syncToDisk.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>

namespace qorfaces {

constexpr int kNoDescriptor = -1;

/// Lets nothing that is opened later stand where standard input, output or errors have been closed:
/// messages would be written into it. To be called first of all.
void keepStandardDescriptors();

/// Another descriptor for the same file; kNoDescriptor where there is none.
int duplicate(int descriptor);

/// Makes `target` lead where `source` leads.
void redirect(int source, int target);

void closeDescriptor(int descriptor);

/// An empty file that is gone when its last descriptor is closed; kNoDescriptor where it cannot be
/// made.
int openTemporary();

void rewindDescriptor(int descriptor);

/// How many bytes were read: 0 at the end of the file, negative where it cannot be read.
int readSome(int descriptor, char* bytes, std::size_t size);

/// How many of at most kMostAtOnce bytes were written: negative where they cannot be.
int writeSome(int descriptor, const char* bytes, std::size_t size);
constexpr std::size_t kMostAtOnce = std::size_t{1} << 20;

/// False where not all could be written.
bool writeAll(int descriptor, const char* bytes, std::size_t size);

/// Whether a person looks at what is written there.
bool isTerminal(int descriptor);

/// How many letters a line of a terminal holds; nothing where that is not known.
std::optional<int> columnsOf(int terminal);

/// Bytes in the file; 0 where that is not known.
std::size_t sizeOf(int descriptor);

/// Waits until what a file holds is on the disk, or, of a directory, the names in it. False, with
/// errno, where it cannot be; Windows does so with no directory.
bool syncToDisk(const std::filesystem::path& path);

/// Makes the file an empty one again.
void emptyDescriptor(int descriptor);

} // namespace qorfaces
