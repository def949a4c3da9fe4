#include "TerminauxTmux/MotsTmux.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau::MotsTmux {
namespace {

constexpr std::size_t nomMax = 128;

constexpr bool chiffre(char c) { return c >= '0' && c <= '9'; }
constexpr bool alphanumerique(char c) { return chiffre(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

constexpr std::array<std::pair<std::string_view, std::string_view>, 14> touches = {{{"esc", "Escape"},
                                                                                    {"entree", "Enter"},
                                                                                    {"tab", "Tab"},
                                                                                    {"haut", "Up"},
                                                                                    {"bas", "Down"},
                                                                                    {"gauche", "Left"},
                                                                                    {"droite", "Right"},
                                                                                    {"espace", "Space"},
                                                                                    {"ctrl+c", "C-c"},
                                                                                    {"ctrl+d", "C-d"},
                                                                                    {"ctrl+z", "C-z"},
                                                                                    {"ctrl+u", "C-u"},
                                                                                    {"ctrl+k", "C-k"},
                                                                                    {"ctrl+r", "C-r"}}};

/// Each byte that is in `reserves`, with `avant` before it.
std::string echapper(std::string_view texte, std::string_view reserves, char avant) {
  std::string echappe;
  for (const char c : texte) {
    if (reserves.find(c) != std::string_view::npos) echappe += avant;
    echappe += c;
  }
  return echappe;
}

}  // namespace

std::string citer(std::string_view octets) {
  constexpr std::string_view simples = "_-./:=@%+, ";
  std::string cite = "\"";
  for (const char c : octets.substr(0, octets.find('\0'))) {
    if (alphanumerique(c) || simples.find(c) != std::string_view::npos) {
      cite += c;
    } else {
      const auto octet = static_cast<unsigned char>(c);
      cite += '\\';
      for (const int decalage : {6, 3, 0}) cite += static_cast<char>('0' + (octet >> decalage) % 8);
    }
  }
  return cite + '"';
}

std::string formatDe(std::string_view texte) { return echapper(texte, "#", '#'); }

std::string comparable(std::string_view texte) { return echapper(texte, "#,}", '#'); }

std::string chercher(std::string_view texte) {
  // A pattern of fnmatch within a format: what the first reads specially, then what the second does.
  return "#{C:" + comparable(echapper(texte, "*?[\\", '\\')) + "}";
}

bool idValide(std::string_view id) {
  return id.size() > 1 && id.size() < 12 && id.front() == '%' && std::ranges::all_of(id.substr(1), chiffre);
}

bool nomValide(std::string_view nom) {
  return !nom.empty() && nom.size() <= nomMax && alphanumerique(nom.front()) &&
         std::ranges::all_of(nom, [](char c) { return alphanumerique(c) || c == '-' || c == '_'; });
}

std::optional<std::string> frapper(std::string_view id, std::string_view touche) {
  const std::string debut = "send-keys -t " + std::string(id) + " ";
  for (const auto& [nom, chezTmux] : touches)
    if (touche == nom) return debut + std::string(chezTmux);
  if (!Texte::utf8Valide(touche) || Texte::porteControle(touche) || Texte::caracteres(touche) != 1)
    return std::nullopt;
  return debut + "-l -- " + citer(touche);
}

}  // namespace tarnavelle::Plateau::MotsTmux
