// A folder of its own for one test, removed with all it holds at the end of the scope.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace tarnavelle {

class DossierTemporaire {
 public:
  DossierTemporaire() {
    const auto parent = std::filesystem::canonical(std::filesystem::temp_directory_path());  // a link on macOS
    std::string modele = (parent / "tarnavelle-XXXXXX").string();
    if (!::mkdtemp(modele.data())) std::abort();
    chemin_ = modele;
  }
  ~DossierTemporaire() { std::filesystem::remove_all(chemin_); }
  DossierTemporaire(const DossierTemporaire&) = delete;
  DossierTemporaire& operator=(const DossierTemporaire&) = delete;

  const std::filesystem::path& chemin() const { return chemin_; }

  /// Writes a file, and the folders on its way; gives its whole path.
  std::filesystem::path ecrire(const std::filesystem::path& relatif, std::string_view contenu) const {
    const auto fichier = chemin_ / relatif;
    std::filesystem::create_directories(fichier.parent_path());
    std::ofstream(fichier, std::ios::binary) << contenu;
    return fichier;
  }

 private:
  std::filesystem::path chemin_;
};

}  // namespace tarnavelle
