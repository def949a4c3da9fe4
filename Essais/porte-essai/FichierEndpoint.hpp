// The endpoint file as the one who opens a door writes it. Reading it is PorteControle's business.
// One thread at a time.
#pragma once

#include <filesystem>
#include <optional>

#include "Porte/PorteControle.hpp"

namespace tarnavelle::PorteEssai {

/// The written file; removed with this object, unless another process has put its own there since.
class FichierEndpoint {
 public:
  /// Writes the file in one step, readable by its owner alone (0600); missing folders are created 0700.
  /// Nothing when that cannot be done.
  static std::optional<FichierEndpoint> ecrire(const std::filesystem::path& chemin,
                                               const EndpointPorte& endpoint);

  FichierEndpoint(FichierEndpoint&& autre) noexcept;
  FichierEndpoint& operator=(FichierEndpoint&&) = delete;
  ~FichierEndpoint();

 private:
  FichierEndpoint(std::filesystem::path chemin, std::int64_t pid);
  std::filesystem::path chemin_;  ///< empty once moved from
  std::int64_t pid_;
};

}  // namespace tarnavelle::PorteEssai
