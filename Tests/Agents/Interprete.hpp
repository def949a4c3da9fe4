// Runs a shell line as another machine would: under a named interpreter, with the environment it is
// given and nothing else. Output goes through files, so that what a line leaves running holds no one up.
#pragma once

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/Environnement.hpp"

namespace tarnavelle::essai {

struct Sortie {
  int statut = -1;  ///< exit status, 128 and the signal when one ended it, 127 when it did not start
  std::string texte;
  std::string erreurs;
};

inline std::ostream& operator<<(std::ostream& flux, const Sortie& sortie) {
  return flux << "statut " << sortie.statut << "\n" << sortie.texte << "\n" << sortie.erreurs;
}

/// A file without a name, gone with this object.
class FichierAnonyme {
 public:
  explicit FichierAnonyme(std::string_view contenu = {}) {
    if (!contenu.empty()) std::fwrite(contenu.data(), 1, contenu.size(), fichier_.get());
    std::rewind(fichier_.get());
  }
  int descripteur() const { return ::fileno(fichier_.get()); }
  std::string contenu() const {
    std::rewind(fichier_.get());
    std::string texte;
    for (int c = std::fgetc(fichier_.get()); c != EOF; c = std::fgetc(fichier_.get()))
      texte += static_cast<char>(c);
    return texte;
  }

 private:
  struct Fermer {
    void operator()(std::FILE* fichier) const { std::fclose(fichier); }
  };
  std::unique_ptr<std::FILE, Fermer> fichier_{std::tmpfile()};
};

/// Runs a program, looked for on the test's own PATH, until it ends.
inline Sortie executer(std::vector<std::string> mots, const Environnement& environnement,
                       std::string_view entree = {}) {
  std::vector<std::string> variables;
  for (const auto& [nom, valeur] : environnement) variables.push_back(nom + "=" + valeur);
  const auto pointeurs = [](std::vector<std::string>& textes) {
    std::vector<char*> liste;
    for (std::string& texte : textes) liste.push_back(texte.data());
    liste.push_back(nullptr);
    return liste;
  };
  const FichierAnonyme flux[] = {FichierAnonyme(entree), FichierAnonyme(), FichierAnonyme()};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (int n = 0; n < 3; ++n) posix_spawn_file_actions_adddup2(&actions, flux[n].descripteur(), n);
  pid_t pid = 0;
  const int echec = ::posix_spawnp(&pid, mots[0].c_str(), &actions, nullptr, pointeurs(mots).data(),
                                   pointeurs(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  if (echec) return {.statut = 127, .texte = {}, .erreurs = mots[0] + " ne démarre pas"};
  int etat = 0;
  ::waitpid(pid, &etat, 0);
  return {.statut = WIFEXITED(etat) ? WEXITSTATUS(etat) : 128 + WTERMSIG(etat),
          .texte = flux[1].contenu(),
          .erreurs = flux[2].contenu()};
}

/// A shell; the line to run follows its words.
struct Interprete {
  std::vector<std::string> mots;

  Sortie executer(std::string_view ligne, const Environnement& environnement,
                  std::string_view entree = {}) const {
    std::vector<std::string> commande = mots;
    commande.emplace_back(ligne);
    return essai::executer(std::move(commande), environnement, entree);
  }
};

inline std::ostream& operator<<(std::ostream& flux, const Interprete& interprete) {
  return flux << testing::PrintToString(interprete.mots);
}

/// The shells that a line may meet on another machine, those installed here; sh is always one of them.
inline const std::vector<Interprete>& interpretes() {
  static const auto presents = [] {
    std::vector<Interprete> liste = {{{"sh", "-c"}}};
    for (const Interprete& autre :
         {Interprete{{"bash", "-c"}}, Interprete{{"zsh", "-c"}}, Interprete{{"zsh", "--emulate", "sh", "-c"}}})
      if (autre.executer("exit 0", {}).statut == 0) liste.push_back(autre);
    return liste;
  }();
  return presents;
}

}  // namespace tarnavelle::essai
