#include "known_models.h"

#include "digest.h"

#include <sstream>

namespace qorfaces {

namespace {

std::istringstream listOf(std::string_view name) {
  for (const EmbeddedFile& file : modelLists()) {
    if (file.name == name) {
      return std::istringstream(std::string(reinterpret_cast<const char*>(file.bytes), file.size));
    }
  }
  return {};
}

std::string embeddedDigestOf(const std::string& publicName) {
  std::istringstream list = listOf("SHA256SUMS");
  for (std::string digest, name; list >> digest >> name;) {
    if (name == publicName) {
      return "sha256:" + digest;
    }
  }
  return {};
}

std::string digestBy(std::string_view algorithm, std::string_view content) {
  if (algorithm == "blob") {
    std::string named = "blob " + std::to_string(content.size());
    named.push_back('\0');
    return sha1(named.append(content));
  }
  return algorithm == "sha1" ? sha1(content) : sha256(content);
}

/// False without digests.
bool hasAll(const std::string& digests, std::string_view content) {
  std::istringstream list(digests);
  std::string digest;
  while (std::getline(list, digest, ',')) {
    const std::size_t colon = digest.find(':');
    if (digestBy(digest.substr(0, colon), content) != digest.substr(colon + 1)) {
      return false;
    }
  }
  return !digests.empty();
}

} // namespace

std::vector<KnownModel> knownModels() {
  std::vector<KnownModel> models;
  std::istringstream list = listOf("models.txt");
  for (std::string line; std::getline(list, line);) {
    if (line.empty() || line.front() == '#') {
      continue;
    }
    KnownModel model;
    std::istringstream(line) >> model.shortName >> model.publicName >> model.publishedDigests;
    model.embeddedDigest = embeddedDigestOf(model.publicName);
    models.push_back(model);
  }
  return models;
}

Origin originOf(const KnownModel& model, std::string_view content) {
  const bool embedded = hasAll(model.embeddedDigest, content);
  const bool published = hasAll(model.publishedDigests, content);
  if (embedded) {
    return published ? Origin::embeddedAndPublished : Origin::embedded;
  }
  return published ? Origin::published : Origin::another;
}

} // namespace qorfaces
