#include "Boucle.hpp"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "Attente.hpp"
#include "LecteurLignes.hpp"
#include "Porte/PorteMCP.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

void ecrire(int sortie, std::string_view octets) {
  while (!octets.empty()) {
    const auto ecrits = ::write(sortie, octets.data(), octets.size());
    if (ecrits < 0 && (errno == EINTR || attendreSiOccupe(sortie, POLLOUT))) continue;
    if (ecrits <= 0) return;
    octets.remove_prefix(static_cast<std::size_t>(ecrits));
  }
}

std::optional<std::string> repondre(const LecteurLignes::Ligne& ligne, Repartiteur& repartiteur) {
  const auto texte = Texte::rogner(ligne.texte);
  if (texte.empty() && !ligne.tropLongue) return std::nullopt;
  try {
    if (auto message = LectureJSON::objet(texte)) return repartiteur.traiter(std::move(*message));
  } catch (const std::bad_alloc&) {  // a line too large for this machine
  }
  return PorteMCP::ligne(PorteMCP::erreur({}, PorteMCP::CodeErreur::illisible, "JSON illisible"));
}

}  // namespace

void servir(int entree, int sortie, Repartiteur& repartiteur) {
  LecteurLignes lecteur(entree);
  while (const auto ligne = lecteur.suivante()) {
    if (auto reponse = repondre(*ligne, repartiteur)) {
      *reponse += '\n';
      ecrire(sortie, *reponse);
    }
  }
}

}  // namespace tarnavelle
