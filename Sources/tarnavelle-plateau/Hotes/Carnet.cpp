#include "Hotes/Carnet.hpp"

#include <algorithm>
#include <fstream>

#include "Agents/CrochetAgent.hpp"
#include "Agents/FichierDistant.hpp"
#include "Etats/Crochets.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/LignesJSON.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::string_view debutCurseur = "{\"tarnavelle.curseur\":";
constexpr std::string_view parleDuLien = "\"hook_event_name\":\"tarnavelle.";
constexpr std::streamoff queueMax = 64 * 1024;  ///< bytes of a log in which its last cursor is looked for

/// The cursor that was last noted in a log.
std::optional<std::int64_t> dernierCurseur(const std::filesystem::path& journal) {
  std::ifstream fichier(journal, std::ios::binary);
  if (!fichier.seekg(0, std::ios::end)) return std::nullopt;
  const std::streamoff taille = fichier.tellg();
  const std::streamoff debut = std::max<std::streamoff>(0, taille - queueMax);
  std::string queue(static_cast<std::size_t>(taille - debut), '\0');
  if (!fichier.seekg(debut) || !fichier.read(queue.data(), taille - debut)) return std::nullopt;
  const auto ou = queue.rfind(debutCurseur);
  if (ou == std::string::npos) return std::nullopt;
  const auto suite = std::string_view(queue).substr(ou + debutCurseur.size());
  return entierDecimal(suite.substr(0, std::min(suite.find('}'), suite.size())));
}

}  // namespace

bool direDuLien(const std::filesystem::path& journal, std::string_view crochet) {
  return CrochetAgent::ajouter(journal, "{\"hook_event_name\":\"" + std::string(crochet) + "\"}\n");
}

Carnet::Carnet(std::string session, std::filesystem::path journal)
    : session_(std::move(session)), journal_(std::move(journal)), curseur_(dernierCurseur(journal_)) {
  if (!curseur_) curseur_ = dernierCurseur(JournalCrochets::ancien(journal_));
}

std::optional<std::int64_t> Carnet::aLire(std::int64_t taille) {
  // Of a log that had grown long before anybody read it, the end tells what counts.
  if (!curseur_) curseur_ = std::max<std::int64_t>(0, taille - FichierDistant::lectureMax);
  if (taille < *curseur_) curseur_ = 0;  // it was emptied: a new session
  return taille > *curseur_ ? curseur_ : std::nullopt;
}

bool Carnet::noter(std::string_view lu) {
  std::string bloc;
  const auto consommes = LignesJSON::parcourir(lu, [&](std::string_view ligne) {
    // Within a text that a program was given, the quotation marks of either would be escaped.
    if (ligne.find(parleDuLien) != std::string_view::npos || ligne.find(debutCurseur) != std::string_view::npos)
      return;
    bloc.append(ligne).push_back('\n');
  });
  const auto suivant = FichierDistant::curseurSuivant(curseur_.value_or(0), lu.size(), consommes);
  if (suivant == curseur_) return true;
  bloc.append(debutCurseur).append(std::to_string(suivant)).append("}\n");
  if (!CrochetAgent::ajouter(journal_, bloc)) return false;
  curseur_ = suivant;
  return true;
}

}  // namespace tarnavelle::Plateau
