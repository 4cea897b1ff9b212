// Whether the annotated copy was written.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace qorfaces {

/// The library ignores a copy that cannot be written; a user who asked for one wants to know.
class CopyWatch {
public:
  /// From now on the copy is expected; an empty path expects none.
  explicit CopyWatch(const std::string& path);

  /// Throws std::runtime_error where the copy has not been written since.
  void expectWritten() const;

private:
  std::optional<std::filesystem::file_time_type> lastWrite() const;

  std::filesystem::path path_;
  std::optional<std::filesystem::file_time_type> before_;
};

} // namespace qorfaces
