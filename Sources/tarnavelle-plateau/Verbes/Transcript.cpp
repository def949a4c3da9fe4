#include "Transcript.hpp"

#include <filesystem>
#include <fstream>

#include "Agents/TranscriptClaude.hpp"

namespace tarnavelle::Plateau::Transcript {
namespace {

constexpr std::streamoff queueMax = 1024 * 1024;  ///< bytes read, from the end

}  // namespace

std::optional<std::string> derniereReponse(const std::string& chemin) {
  std::error_code erreur;
  if (chemin.empty() || !std::filesystem::is_regular_file(chemin, erreur)) return std::nullopt;
  std::ifstream fichier(chemin, std::ios::binary);
  if (!fichier.seekg(0, std::ios::end)) return std::nullopt;
  const std::streamoff taille = fichier.tellg();
  const std::streamoff debut = taille > queueMax ? taille - queueMax : 0;
  std::string queue(static_cast<std::size_t>(taille - debut), '\0');
  if (!fichier.seekg(debut) || !fichier.read(queue.data(), taille - debut)) return std::nullopt;
  auto textes = TranscriptClaude::lire(queue).textes;  // a first line that is cut is none
  if (textes.empty()) return std::nullopt;
  return std::move(textes.back());
}

}  // namespace tarnavelle::Plateau::Transcript
