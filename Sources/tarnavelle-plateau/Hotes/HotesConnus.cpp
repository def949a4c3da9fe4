#include "Hotes/HotesConnus.hpp"

#include <glob.h>

#include <algorithm>
#include <map>
#include <set>

#include "Socle/Fichiers.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau::HotesConnus {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view blancs = " \t\r\f\v";

/// The next word of a line, without its quotes, and what follows it; empty at the end or at a comment.
std::string mot(std::string_view& ligne) {
  ligne.remove_prefix(std::min(ligne.find_first_not_of(blancs), ligne.size()));
  std::string lu;
  if (ligne.starts_with('#')) return lu;
  bool cite = false;
  std::size_t i = 0;
  for (; i < ligne.size() && (cite || blancs.find(ligne[i]) == std::string_view::npos); ++i) {
    if (ligne[i] == '"')
      cite = !cite;
    else
      lu += ligne[i];
  }
  ligne.remove_prefix(i);
  return lu;
}

/// The keyword that begins a line, which an "=" may end.
std::string motCle(std::string_view& ligne) {
  ligne.remove_prefix(std::min(ligne.find_first_not_of(blancs), ligne.size()));
  const auto fin = std::min(ligne.find_first_of(" \t\r\f\v=\"#"), ligne.size());
  std::string cle = Texte::minuscules(ligne.substr(0, fin));
  ligne.remove_prefix(fin);
  ligne.remove_prefix(std::min(ligne.find_first_not_of(blancs), ligne.size()));
  if (ligne.starts_with('=')) ligne.remove_prefix(1);
  return cle;
}

class Lecture {
 public:
  explicit Lecture(fs::path personnel) : personnel_(std::move(personnel)) {}

  void lire(const fs::path& fichier, int profondeur) {
    if (profondeur > profondeurMax || ++fichiers_ > fichiersMax) return;
    const auto texte = lireFichier(fichier, fichierMax);
    if (!texte) return;
    for (std::string_view reste = *texte; !reste.empty();) {
      const auto fin = std::min(reste.find('\n'), reste.size());
      std::string_view ligne = reste.substr(0, fin);
      reste.remove_prefix(std::min(fin + 1, reste.size()));
      const std::string cle = motCle(ligne);
      const bool hote = cle == "host";
      if (!hote && cle != "include") continue;
      for (std::string m = mot(ligne); !m.empty(); m = mot(ligne)) hote ? retenir(m) : inclure(m, profondeur);
    }
  }

  std::vector<std::string> noms;

 private:
  void retenir(const std::string& nom) {
    if (noms.size() < hotesMax && nom.find_first_of("*?!") == std::string::npos && nomSur(nom) &&
        vus_.insert(nom).second)
      noms.push_back(nom);
  }

  void inclure(const std::string& motif, int profondeur) {
    fs::path chemin = motif;
    if (motif.starts_with("~/")) chemin = personnel_ / motif.substr(2);
    if (chemin.is_relative()) chemin = personnel_ / ".ssh" / chemin;
    glob_t trouves{};
    if (::glob(chemin.c_str(), 0, nullptr, &trouves) == 0)
      for (std::size_t i = 0; i < trouves.gl_pathc; ++i) lire(trouves.gl_pathv[i], profondeur + 1);
    ::globfree(&trouves);
  }

  const fs::path personnel_;
  std::size_t fichiers_ = 0;
  std::set<std::string> vus_;
};

}  // namespace

bool nomSur(std::string_view hote) {
  return !hote.empty() && hote.size() <= nomMax && !hote.starts_with('-') &&
         hote.find_first_of("'`\"$\\;&<>|(){}") == std::string_view::npos && Texte::utf8Valide(hote) &&
         !Texte::porteControle(hote) && Texte::mots(hote).size() == 1 && Texte::mots(hote).front() == hote;
}

std::optional<std::string> destination(std::string_view configuration) {
  std::map<std::string_view, std::string> lues{{"user", ""}, {"hostname", ""}, {"port", ""}, {"proxyjump", ""}};
  while (!configuration.empty()) {
    const auto fin = std::min(configuration.find('\n'), configuration.size());
    const auto ligne = configuration.substr(0, fin);
    configuration.remove_prefix(std::min(fin + 1, configuration.size()));
    const auto blanc = std::min(ligne.find(' '), ligne.size());
    const auto lue = lues.find(ligne.substr(0, blanc));
    if (lue == lues.end() || blanc == ligne.size()) continue;
    lue->second = Inoffensif::epurer(Texte::tronquer(Texte::reparer(ligne.substr(blanc + 1)), nomMax));
  }
  const std::string &hote = lues["hostname"], &port = lues["port"], &saut = lues["proxyjump"];
  if (lues["user"].empty() || hote.empty() || port.empty()) return std::nullopt;
  return lues["user"] + "@" + (hote.find(':') == std::string::npos ? hote : "[" + hote + "]") + ":" + port +
         (saut.empty() || saut == "none" ? "" : " par " + saut);
}

std::vector<std::string> lire(const std::filesystem::path& configuration,
                              const std::filesystem::path& personnel) {
  Lecture lecture(personnel);
  lecture.lire(configuration, 0);
  return std::move(lecture.noms);
}

}  // namespace tarnavelle::Plateau::HotesConnus
