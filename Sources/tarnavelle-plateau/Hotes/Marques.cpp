#include <random>

#include "MarquesInterne.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Shell.hpp"

namespace tarnavelle::Plateau::interne {

Marques::Marques() {
  std::random_device hasard;
  for (int i = 0; i < 24; ++i) jeton_ += "0123456789abcdefghijklmnopqrstuv"[hasard() % 32];
}

/// Written in two pieces: a shell that shows what it reads does not show a mark.
std::string Marques::marque(std::string_view suite) const {
  return "printf '\\n%s%s" + std::string(suite) + "\\n' D" + jeton_.substr(0, 12) + " " + jeton_.substr(12);
}

std::string Marques::autourIci(std::string_view ligne) const {
  return marque("") + "\n{ " + std::string(ligne) + "\n} </dev/null\n" + marque(" %s") + " \"$?\"\n";
}

std::string Marques::autour(std::string_view ligne, std::string_view entree) const {
  std::string script = marque("") + "; sh -c " + Shell::mot(ligne);
  if (entree.empty())
    script += " </dev/null; ";
  else
    script += " <<'F" + jeton_ + "'\n" + std::string(entree) + (entree.ends_with('\n') ? "" : "\n") + "F" +
              jeton_ + "\n";
  return script + marque(" %s") + " \"$?\"\n";
}

std::optional<Marques::Lue> Marques::lire(std::string_view tout) const {
  const std::string marque = "\nD" + jeton_;
  const std::string debut = marque + "\n";
  const std::string fin = marque + " ";
  const auto d = tout.find(debut);
  const auto f = tout.rfind(fin);
  if (d == std::string_view::npos && f == std::string_view::npos) return std::nullopt;
  const std::size_t premier = d == std::string_view::npos ? 0 : d + debut.size();
  if (f == std::string_view::npos || f < premier) return Lue{tout.substr(premier), {}};
  const auto suite = tout.substr(f + fin.size());
  const auto ligne = suite.find('\n');
  const auto statut = ligne == std::string_view::npos ? std::nullopt : entierDecimal(suite.substr(0, ligne));
  return Lue{tout.substr(premier, f - premier),
             statut ? std::optional(static_cast<int>(*statut)) : std::nullopt};
}

}  // namespace tarnavelle::Plateau::interne
