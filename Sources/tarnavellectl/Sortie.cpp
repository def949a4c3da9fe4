#include "Sortie.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

#include "Socle/Fichiers.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {

std::string citer(std::string_view mot) {
  constexpr std::size_t caracteresMax = 40;
  return "« " + Inoffensif::montrable(Texte::tronquer(mot, caracteresMax)) + " »";
}

Sortie::Sortie(int descripteur, const Variables& environnement)
    : descripteur_(descripteur), terminal_(::isatty(descripteur) == 1) {
  // https://no-color.org: any value but an empty one.
  couleurs_ = terminal_ && environnement.octets("NO_COLOR").value_or("").empty() &&
              environnement.texte("TERM").value_or("dumb") != "dumb";
}

std::optional<std::size_t> Sortie::colonnes() const {
  if (!terminal_) return std::nullopt;
  constexpr std::size_t usuelles = 80;
  winsize taille{};
  if (::ioctl(descripteur_, TIOCGWINSZ, &taille) != 0 || taille.ws_col == 0) return usuelles;
  return taille.ws_col;
}

void Sortie::montrer(const Page& page) {
  std::string texte;
  for (const Ligne& ligne : page) {
    const bool teinte = ligne.titre && couleurs_;
    texte.append(teinte ? "\033[1m" : "").append(Inoffensif::montrable(ligne.texte, "\n\t"));
    texte.append(teinte ? "\033[0m\n" : "\n");
  }
  ecrire(texte);
}

void Sortie::avertir(std::string_view message) {
  ecrire((couleurs_ ? "\033[31mtarnavellectl :\033[0m " : "tarnavellectl : ") +
         Inoffensif::montrable(message, "\n\t") + "\n");
}

void Sortie::rendre(std::string_view document) {
  if (!terminal_) return ecrire(document);
  std::string texte = Inoffensif::montrable(document, "\n\t");
  if (!texte.ends_with('\n')) texte += '\n';
  ecrire(texte);
}

void Sortie::ecrire(std::string_view octets) { perdu_ = !ecrireTout(descripteur_, octets) || perdu_; }

}  // namespace tarnavelle
