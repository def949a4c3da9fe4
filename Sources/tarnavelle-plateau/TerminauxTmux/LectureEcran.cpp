#include "TerminauxTmux/LectureEcran.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <system_error>
#include <utility>

#include "Socle/Colonnes.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau::LectureEcran {
namespace {

constexpr char echappement = '\x1b';

/// VT100's line drawing characters, from "`" (0x60) to "~".
constexpr std::array<std::string_view, 31> traits = {"◆", "▒", "␉", "␌", "␍", "␊", "°", "±", "␤", "␋", "┘",
                                                     "┐", "┌", "└", "┼", "⎺", "⎻", "─", "⎼", "⎽", "├", "┤",
                                                     "┴", "┬", "│", "≤", "≥", "π", "≠", "£", "·"};

/// How the cells that follow are drawn. Lasts from one line to the next.
struct Trace {
  Style style;
  bool traits = false;
};

/// The parameters of an SGR sequence, one after the other.
class Parametres {
 public:
  explicit Parametres(std::string_view texte) : reste_(texte) {}

  bool encore() const { return reste_.has_value(); }
  std::string_view suivant() {
    const auto texte = reste_.value_or("");
    const auto fin = texte.find(';');
    reste_ = fin == std::string_view::npos ? std::nullopt : std::optional(texte.substr(fin + 1));
    return texte.substr(0, fin);
  }
  /// From 0 to 255; else nothing.
  std::optional<std::uint8_t> octet() { return lireOctet(suivant()); }
  static std::optional<std::uint8_t> lireOctet(std::string_view texte) {
    std::uint8_t lu = 0;
    const auto* fin = texte.data() + texte.size();
    const auto issue = std::from_chars(texte.data(), fin, lu);
    return issue.ec == std::errc() && issue.ptr == fin ? std::optional(lu) : std::nullopt;
  }
  /// What follows a 38, a 48 or a 58; nothing when it is no colour.
  std::optional<Couleur> couleur() {
    const auto genre = suivant();
    if (genre == "5") {
      const auto rang = octet();
      return rang ? std::optional(Couleur{Couleur::Genre::palette, *rang}) : std::nullopt;
    }
    if (genre != "2") return std::nullopt;
    const auto rouge = octet(), vert = octet(), bleu = octet();
    if (!rouge || !vert || !bleu) return std::nullopt;
    return Couleur{Couleur::Genre::vraie, static_cast<std::uint32_t>(*rouge << 16 | *vert << 8 | *bleu)};
  }

 private:
  std::optional<std::string_view> reste_;
};

void colorier(std::string_view texte, Style& style) {
  Parametres parametres(texte);
  while (parametres.encore()) {
    const auto parametre = parametres.suivant();
    if (parametre.starts_with("4:")) {
      style.souligne = parametre != "4:0";
      continue;
    }
    const auto lu = parametre.empty() ? std::optional<std::uint8_t>(0) : Parametres::lireOctet(parametre);
    if (!lu) continue;
    const unsigned n = *lu;
    const auto vive = [&](unsigned base, unsigned rang) {
      return Couleur{Couleur::Genre::palette, n - base + rang};
    };
    switch (n) {
      case 0: style = {}; break;
      case 1: style.gras = true; break;
      case 2: style.attenue = true; break;
      case 3: style.italique = true; break;
      case 4:
      case 21: style.souligne = true; break;
      case 7: style.inverse = true; break;
      case 8: style.cache = true; break;
      case 9: style.barre = true; break;
      case 22: style.gras = style.attenue = false; break;
      case 23: style.italique = false; break;
      case 24: style.souligne = false; break;
      case 27: style.inverse = false; break;
      case 28: style.cache = false; break;
      case 29: style.barre = false; break;
      case 38: style.encre = parametres.couleur().value_or(style.encre); break;
      case 39: style.encre = {}; break;
      case 48: style.fond = parametres.couleur().value_or(style.fond); break;
      case 49: style.fond = {}; break;
      case 58: parametres.couleur(); break;  // an underline's own colour
      default:
        if (n >= 30 && n <= 37) style.encre = vive(30, 0);
        if (n >= 40 && n <= 47) style.fond = vive(40, 0);
        if (n >= 90 && n <= 97) style.encre = vive(90, 8);
        if (n >= 100 && n <= 107) style.fond = vive(100, 8);
    }
  }
}

/// Takes the escape sequence that `reste` begins with, never beyond its end.
void sequence(std::string_view& reste, Trace& trace) {
  const char genre = reste.size() > 1 ? reste[1] : '\0';
  std::size_t fin = 2;
  const auto dans = [&](char bas, char haut) {
    return fin < reste.size() && reste[fin] >= bas && reste[fin] <= haut;
  };
  if (genre == '[') {
    while (dans(0x20, 0x3f)) ++fin;
    if (fin < reste.size() && reste[fin] == 'm') colorier(reste.substr(2, fin - 2), trace.style);
    ++fin;
  } else if (genre == ']' || genre == 'P' || genre == 'X' || genre == '^' || genre == '_') {
    while (fin < reste.size() && reste[fin] != '\a' && reste[fin] != echappement) ++fin;
    fin += reste.substr(std::min(fin, reste.size())).starts_with("\x1b\\") ? 2 : 1;
  } else if (genre >= 0x20 && genre <= 0x2f) {
    while (dans(0x20, 0x2f)) ++fin;
    ++fin;
  }
  reste.remove_prefix(std::min(fin, reste.size()));
}

void rogner(std::string& ligne) { ligne.erase(ligne.find_last_not_of(' ') + 1); }

/// Tells `dessiner` of each character of a line, drawn as the trace says by then.
template <class Dessiner>
void lireLigne(std::string_view reste, Trace& trace, Dessiner dessiner) {
  while (!reste.empty()) {
    const auto octet = static_cast<unsigned char>(reste.front());
    if (octet == echappement) {
      sequence(reste, trace);
      continue;
    }
    auto caractere = reste.substr(0, 1);
    if (octet == 0x0e || octet == 0x0f) trace.traits = octet == 0x0e;
    const bool controle = octet < 0x20 || octet == 0x7f;
    if (octet >= 0x80) {
      const auto longueur = Texte::longueurSequence(reste);
      caractere = longueur ? reste.substr(0, longueur) : "\uFFFD";
      reste.remove_prefix(longueur ? longueur : 1);
    } else {
      if (trace.traits && octet >= 0x60 && octet < 0x7f) caractere = traits[octet - 0x60];
      reste.remove_prefix(1);
    }
    if (!controle) dessiner(caractere);
  }
}

/// Hands the lines over, one after the other.
template <class Ligne>
void couper(std::string_view capture, Ligne ligne) {
  while (!capture.empty()) {
    const auto fin = capture.find('\n');
    ligne(capture.substr(0, fin));
    if (fin == std::string_view::npos) break;
    capture.remove_prefix(fin + 1);
  }
}

}  // namespace

Lignes lire(std::string_view capture) {
  Lignes lignes;
  Trace trace;
  couper(capture, [&](std::string_view ligne) {
    std::string& vue = lignes.vues.emplace_back();
    std::string& attenuee = lignes.attenuees.emplace_back();
    std::string dim;  // what is drawn dim, to be measured as a whole: a character may take several sequences
    const auto blanchir = [&] { attenuee.append(Colonnes::largeur(std::exchange(dim, {})), ' '); };
    lireLigne(ligne, trace, [&](std::string_view caractere) {
      vue += caractere;
      if (trace.style.attenue) {
        dim += caractere;
      } else {
        blanchir();
        attenuee += caractere;
      }
    });
    blanchir();
    rogner(vue);
    rogner(attenuee);
  });
  return lignes;
}

std::vector<std::vector<Troncon>> peindre(std::string_view capture) {
  std::vector<std::vector<Troncon>> lignes;
  Trace trace;
  couper(capture, [&](std::string_view texte) {
    auto& ligne = lignes.emplace_back();
    lireLigne(texte, trace, [&](std::string_view caractere) {
      if (ligne.empty() || ligne.back().style != trace.style)
        ligne.push_back({.texte = {}, .style = trace.style});
      ligne.back().texte += caractere;
    });
  });
  return lignes;
}

}  // namespace tarnavelle::Plateau::LectureEcran
