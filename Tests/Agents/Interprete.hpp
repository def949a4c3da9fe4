// Runs a shell line as another machine would: under a named interpreter, with the environment it is
// given and nothing else. Output goes through files, so that what a line leaves running holds no one up.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "DossierTemporaire.hpp"
#include "Socle/Environnement.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Shell.hpp"

namespace tarnavelle::essai {

struct Sortie {
  int statut = -1;  ///< exit status, 128 and the signal when one ended it, 127 when it did not start
  std::string texte;
  std::string erreurs;
};

inline std::ostream& operator<<(std::ostream& flux, const Sortie& sortie) {
  return flux << "statut " << sortie.statut << "\n" << sortie.texte << "\n" << sortie.erreurs;
}

/// Runs a program, looked for on the test's own PATH, until it ends.
inline Sortie executer(const std::vector<std::string>& mots, const Environnement& environnement,
                       std::string_view entree = {}) {
  const DossierTemporaire flux;
  flux.ecrire("entree", entree);
  std::string ligne =
      "F=" + Shell::mot(flux.chemin().string()) + "; exec <\"$F/entree\" >\"$F/texte\" 2>\"$F/erreurs\" env -i";
  for (const auto& [nom, valeur] : environnement) ligne += ' ' + Shell::mot(nom + "=" + valeur);
  ligne += " \"$(command -v " + Shell::mot(mots[0]) + ")\"";
  for (std::size_t i = 1; i < mots.size(); ++i) ligne += ' ' + Shell::mot(mots[i]);
  const int etat = std::system(ligne.c_str());
  const auto lire = [&](const char* nom) { return lireFichier(flux.chemin() / nom, 1 << 24).value_or(""); };
  return {WIFEXITED(etat) ? WEXITSTATUS(etat) : 128 + WTERMSIG(etat), lire("texte"), lire("erreurs")};
}

/// A shell; the line to run follows its words.
using Interprete = std::vector<std::string>;

inline Sortie executerLigne(Interprete interprete, std::string_view ligne, const Environnement& environnement) {
  interprete.emplace_back(ligne);
  return executer(interprete, environnement);
}

/// The shells that a line may meet on another machine, those installed here; sh is always one of them.
inline const std::vector<Interprete>& interpretes() {
  static const auto presents = [] {
    std::vector<Interprete> liste = {
        {"sh", "-c"}, {"bash", "-c"}, {"zsh", "-c"}, {"zsh", "--emulate", "sh", "-c"}};
    std::erase_if(liste, [](const Interprete& i) { return executerLigne(i, "exit 0", {}).statut != 0; });
    return liste;
  }();
  return presents;
}

}  // namespace tarnavelle::essai
