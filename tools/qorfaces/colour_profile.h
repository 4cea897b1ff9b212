// What the numbers of a picture mean: its ICC profile, which OpenCV neither reads nor writes.
#pragma once

#include <vector>

namespace qorfaces {

using Bytes = std::vector<unsigned char>;

/// What the profile's numbers stand for.
enum class ProfileColours { rgb, grey, other };

/// The profile in a JPEG, PNG, TIFF or WebP file; empty where it has none, or none that is whole.
Bytes colourProfile(const Bytes& file);

/// Of a profile that is not empty.
ProfileColours coloursOf(const Bytes& profile);

/// The JPEG file with the profile in it, which may be empty. For a file as an encoder writes it,
/// without a profile. Throws std::runtime_error where a profile is too long for a JPEG file.
Bytes withColourProfile(const Bytes& jpeg, const Bytes& profile);

} // namespace qorfaces
