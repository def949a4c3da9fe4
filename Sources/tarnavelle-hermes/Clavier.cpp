#include "Clavier.hpp"

#include <algorithm>
#include <optional>
#include <utility>

#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

using Touche = Frappe::Touche;

constexpr std::string_view debutCollage = "\033[200~", finCollage = "\033[201~";

struct Sequence {
  std::string_view octets;
  Touche touche;
};
// ECMA-48 and xterm, in both cursor modes.
constexpr Sequence sequences[] = {
    {"\033[A", Touche::haut},          {"\033OA", Touche::haut},   {"\033[B", Touche::bas},
    {"\033OB", Touche::bas},           {"\033[C", Touche::droite}, {"\033OC", Touche::droite},
    {"\033[D", Touche::gauche},        {"\033OD", Touche::gauche}, {"\033[H", Touche::debut},
    {"\033OH", Touche::debut},         {"\033[1~", Touche::debut}, {"\033[F", Touche::fin},
    {"\033OF", Touche::fin},           {"\033[4~", Touche::fin},   {"\033[3~", Touche::supprimer},
    {"\033\r", Touche::nouvelleLigne},
};

std::optional<Touche> controle(unsigned char c) {
  switch (c) {
    case '\r': return Touche::entree;
    case '\n': return Touche::nouvelleLigne;
    case '\t': return Touche::tabulation;
    case 0x01: return Touche::debut;
    case 0x03: return Touche::ctrlC;
    case 0x04: return Touche::ctrlD;
    case 0x05: return Touche::fin;
    case 0x0B: return Touche::finDeLigne;
    case 0x0C: return Touche::ctrlL;
    case 0x15: return Touche::vider;
    case 0x17: return Touche::mot;
    case 0x08:
    case 0x7F: return Touche::retourArriere;
    default: return std::nullopt;
  }
}

/// Length of the control sequence that begins the text; 0 while it is not whole.
std::size_t longueurSequenceCSI(std::string_view texte) {
  if (texte.starts_with("\033O")) return texte.size() >= 3 ? 3 : 0;
  for (std::size_t i = 2; i < texte.size(); ++i) {
    const auto c = static_cast<unsigned char>(texte[i]);
    if (c >= 0x40 && c <= 0x7E) return i + 1;
    if (c < 0x20 || c > 0x7E) return i;  // none after all
  }
  return 0;
}

/// Line ends LF, no other control character, well-formed.
std::string propre(std::string_view colle) {
  std::string texte;
  for (std::size_t i = 0; i < colle.size(); ++i) {
    const char c = colle[i];
    if (c == '\r') {
      if (i + 1 >= colle.size() || colle[i + 1] != '\n') texte += '\n';
    } else if (c == '\n' || c == '\t' || (static_cast<unsigned char>(c) >= 0x20 && c != 0x7F)) {
      texte += c;
    }
  }
  return Texte::reparer(texte);
}

}  // namespace

std::vector<Frappe> Clavier::lire(std::string_view octets) {
  reste_ += octets;
  return avancer(false);
}

std::vector<Frappe> Clavier::calme() { return avancer(true); }

std::vector<Frappe> Clavier::avancer(bool calme) {
  std::vector<Frappe> frappes;
  const auto texte = [&](std::string_view morceau) {
    auto* dernier = frappes.empty() ? nullptr : std::get_if<Frappe::saisie>(&frappes.back().cas);
    if (dernier)
      dernier->texte += morceau;
    else
      frappes.push_back({Frappe::saisie{std::string(morceau)}});
  };
  std::string_view reste = reste_;
  while (!reste.empty()) {
    if (enCollage_) {
      const auto fin = reste.find(finCollage);
      // Its end may be cut: as much is kept as could begin it.
      const auto pris = fin != reste.npos ? fin : reste.size() - std::min(reste.size(), finCollage.size() - 1);
      collage_ += reste.substr(0, std::min(pris, collageMax - std::min(collage_.size(), collageMax)));
      reste.remove_prefix(pris);
      if (fin == reste_.npos) break;
      reste.remove_prefix(finCollage.size());
      enCollage_ = false;
      frappes.push_back({Frappe::collage{propre(std::exchange(collage_, {}))}});
    } else if (reste.starts_with(debutCollage)) {
      enCollage_ = true;
      reste.remove_prefix(debutCollage.size());
    } else if (reste.front() == '\033') {
      const auto connue =
          std::ranges::find_if(sequences, [&](const Sequence& s) { return reste.starts_with(s.octets); });
      if (connue != std::end(sequences)) {
        frappes.push_back({connue->touche});
        reste.remove_prefix(connue->octets.size());
        continue;
      }
      const bool seul = reste.size() == 1;
      const bool csi = reste.size() > 1 && (reste[1] == '[' || reste[1] == 'O');
      const auto longueur = csi ? longueurSequenceCSI(reste) : 0;
      if (longueur > 0) {
        reste.remove_prefix(longueur);  // of no meaning here
      } else if ((seul || csi) && !calme) {
        break;
      } else {
        frappes.push_back({Touche::echap});
        reste.remove_prefix(1);
      }
    } else if (const auto c = static_cast<unsigned char>(reste.front()); c < 0x20 || c == 0x7F) {
      if (const auto touche = controle(c)) frappes.push_back({*touche});
      reste.remove_prefix(1);
    } else {
      const auto longueur = Texte::longueurSequence(reste);
      const bool coupee = longueur == 0 && reste.size() < 4 && c >= 0xC2 && !calme;
      if (coupee) break;
      texte(longueur == 0 ? "\uFFFD" : reste.substr(0, longueur));
      reste.remove_prefix(std::max<std::size_t>(1, longueur));
    }
  }
  reste_ = std::string(reste);
  return frappes;
}

}  // namespace tarnavelle
