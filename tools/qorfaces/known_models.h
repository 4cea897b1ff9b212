// The model files that are known by their digests, those of the two sets that docs/guides/models.md
// describes.
#pragma once

#include "embedded_file.h"

#include <string>
#include <string_view>

namespace qorfaces {

/// scripts/models.txt and assets/models/SHA256SUMS, which the scripts go by, too.
const std::vector<EmbeddedFile>& modelLists();

struct KnownModel {
  std::string shortName; // of the seven, as initModelsAtPath takes them
  std::string publicName;
  /// ALGORITHM:DIGEST, with commas between them, all of which the published file has. The algorithms
  /// are sha256, sha1 and blob, SHA-1 as git takes it.
  std::string publishedDigests;
  std::string embeddedDigest; // the same of the embedded file
};

/// In the order of their numbers.
std::vector<KnownModel> knownModels();

enum class Origin { embedded, published, embeddedAndPublished, another };

Origin originOf(const KnownModel& model, std::string_view content);

} // namespace qorfaces
