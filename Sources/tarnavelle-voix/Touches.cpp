#include "Touches.hpp"

#include <algorithm>
#include <utility>

#include "Socle/LectureJSON.hpp"

namespace tarnavelle::Voix {
namespace {

constexpr int presse = 1, repete = 2, lache = 3;
constexpr std::size_t sequenceMax = 64;

int nombre(std::string_view texte, int sinon) { return static_cast<int>(entierDecimal(texte).value_or(sinon)); }

/// The first of the pieces that `signe` parts, and what follows it.
std::pair<std::string_view, std::string_view> couper(std::string_view texte, char signe) {
  const auto ou = texte.find(signe);
  return ou == texte.npos ? std::pair(texte, std::string_view())
                          : std::pair(texte.substr(0, ou), texte.substr(ou + 1));
}

}  // namespace

void Touches::caractere(int point, bool controle, int genre, std::vector<Touche>& touches) {
  if (point == ' ' && genre != repete) {
    touches.push_back(genre == lache ? Touche::espaceLachee : Touche::espace);
    return;
  }
  if (genre == lache) return;
  if (point == 27) touches.push_back(Touche::echap);
  const bool fin = point == 'q' || point == 'Q' || (controle && (point == 'c' || point == 'd'));
  if (fin) touches.push_back(Touche::quitter);
  if (controle && point == 'l') touches.push_back(Touche::redessiner);
}

void Touches::sequence(std::string_view corps, char fin, std::vector<Touche>& touches) {
  if (fin != 'u') return;  // arrows and the like mean nothing here
  if (corps.starts_with('?')) {
    saitLacher_ = true;
    return;
  }
  // code[:…][;modifiers[:kind]][;text]
  const auto [cle, suite] = couper(corps, ';');
  const auto [modifieurs, genre] = couper(couper(suite, ';').first, ':');
  const bool controle = ((nombre(modifieurs, 1) - 1) & 4) != 0;
  caractere(nombre(couper(cle, ':').first, 0), controle, nombre(genre, presse), touches);
}

std::vector<Touche> Touches::lire(std::string_view octets) {
  reste_ += octets;
  std::vector<Touche> touches;
  std::string_view reste = reste_;
  while (!reste.empty()) {
    const auto c = static_cast<unsigned char>(reste.front());
    if (c == 27) {
      if (reste.size() == 1) break;  // of a sequence, or a key
      if (reste[1] != '[') {
        touches.push_back(Touche::echap);
        reste.remove_prefix(1);
        continue;
      }
      const auto borne = std::min(reste.size(), sequenceMax);
      std::size_t fin = 2;
      while (fin < borne && (reste[fin] < 0x40 || reste[fin] > 0x7E)) ++fin;
      if (fin == borne && borne < sequenceMax) break;
      if (fin < borne) sequence(reste.substr(2, fin - 2), reste[fin], touches);
      reste.remove_prefix(std::min(fin + 1, borne));
      continue;
    }
    const bool controle = c < 0x20;
    caractere(controle ? c + 'a' - 1 : c, controle, presse, touches);
    reste.remove_prefix(1);
  }
  reste_ = std::string(reste);
  return touches;
}

std::vector<Touche> Touches::calme() {
  if (std::exchange(reste_, {}).empty()) return {};
  return {Touche::echap};
}

}  // namespace tarnavelle::Voix
