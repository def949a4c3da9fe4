// The endpoint file as the one who opens a door writes it. Reading it is PorteControle's business.
// One thread at a time.
#pragma once

#include <filesystem>
#include <optional>

#include "Porte/PorteControle.hpp"

namespace tarnavelle::Plateau {

/// The written file; removed with this object, unless another process has put its own there since.
class FichierEndpoint {
 public:
  /// The door of another process that the file leads to and that listens, on this machine: its file is not to
  /// be replaced.
  static std::optional<EndpointPorte> autrePorte(const std::filesystem::path& chemin);

  /// Writes the file in one step, readable by its owner alone (0600); missing folders are created 0700.
  /// Nothing when that cannot be done.
  static std::optional<FichierEndpoint> ecrire(const std::filesystem::path& chemin,
                                               const EndpointPorte& endpoint);

  /// Writes it again where nothing stands there any more; whether something does.
  bool retablir() const;

  FichierEndpoint(FichierEndpoint&& autre) noexcept;
  FichierEndpoint& operator=(FichierEndpoint&&) = delete;
  ~FichierEndpoint();

 private:
  FichierEndpoint(std::filesystem::path chemin, EndpointPorte endpoint);
  std::filesystem::path chemin_;  ///< empty once moved from
  EndpointPorte endpoint_;
};

}  // namespace tarnavelle::Plateau
