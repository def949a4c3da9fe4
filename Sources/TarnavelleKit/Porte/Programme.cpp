#include "Porte/Programme.hpp"

#include <filesystem>
#include <system_error>

#include "Porte/PorteMCP.hpp"
#include "Socle/Fichiers.hpp"

#if defined(__APPLE__)
#include <mach-o/dyld.h>

#include <array>
#include <climits>
#endif

namespace tarnavelle::Programme {

std::string chemin() {
  std::error_code erreur;
#if defined(__APPLE__)
  std::array<char, PATH_MAX> tampon;
  auto taille = static_cast<std::uint32_t>(tampon.size());
  if (_NSGetExecutablePath(tampon.data(), &taille) != 0) return {};
  return std::filesystem::canonical(tampon.data(), erreur).string();
#else
  return std::filesystem::read_symlink("/proc/self/exe", erreur).string();
#endif
}

std::string voisin(std::string_view nom) {
  return std::filesystem::path(chemin()).replace_filename(nom).string();
}

std::optional<std::string> pont(const Variables& environnement) {
  std::filesystem::path chemin;
  if (const auto choisi = environnement.texte("TARNAVELLE_MCP_SERVER"))
    chemin = *choisi;
  else
    chemin = voisin(PorteMCP::nomServeur);
  std::error_code erreur;
  const auto absolu = std::filesystem::absolute(chemin, erreur);
  if (erreur || !fichierExecutable(absolu)) return std::nullopt;
  return absolu.string();
}

}  // namespace tarnavelle::Programme
