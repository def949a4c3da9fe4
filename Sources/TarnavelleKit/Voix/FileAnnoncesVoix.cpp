#include "Voix/FileAnnoncesVoix.hpp"

#include <utility>

#include "Socle/Texte.hpp"

namespace tarnavelle {

void FileAnnoncesVoix::enfiler(std::string_view texte) {
  const auto annonce = Texte::rogner(texte);
  if (annonce.empty() || (!attente.empty() && attente.back() == annonce)) return;
  attente.emplace_back(annonce);
  while (attente.size() > maxEnAttente) attente.pop_front();
}

bool FileAnnoncesVoix::peutLivrer(const Conversation& c) {
  return c.connecte && !c.reponseActive && !c.appelEnCours && !c.feuVertEnAttente;
}

std::optional<std::string> FileAnnoncesVoix::prochaine(const Conversation& conversation) {
  if (attente.empty() || !peutLivrer(conversation)) return std::nullopt;
  std::optional<std::string> annonce = std::move(attente.front());
  attente.pop_front();
  return annonce;
}

void FileAnnoncesVoix::remettre(std::string texte) {
  attente.push_front(std::move(texte));
  while (attente.size() > maxEnAttente) attente.pop_back();
}

}  // namespace tarnavelle
