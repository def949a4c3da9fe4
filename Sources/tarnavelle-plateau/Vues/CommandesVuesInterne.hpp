// The lines by which scenes are shown on a tmux server, and the reading of what stands there. Whatever the
// board has made bears its mark in an option: another pane or window is a person's own. Pure functions.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Terminaux/Terminaux.hpp"

namespace tarnavelle::Plateau::CommandesVues {

/// One pane of a scene's window.
struct Volet {
  std::string id;
  std::string vue;      ///< whose view it is: the board's id; empty for the list, and for a person's own
  std::string regarde;  ///< the terminal that it was made for
  bool liste = false;
  Taille taille;
};

struct SceneMontree {
  std::string fenetre;  ///< tmux's number: "@3"
  std::string session;  ///< the same: "$3"; a person may have given it another name
  std::string nom;      ///< that one
  Taille taille;
  std::string actif;            ///< the pane that has the keyboard
  std::string plan;             ///< by name, with what was given the large place after a space; empty for none
  std::vector<Volet> volets{};  ///< in tmux's order
};

/// An agent's terminal.
struct Montrable {
  std::string terminal;
  std::string session;
  Taille taille;
};

/// A person's terminal, wherever it looks.
struct Spectateur {
  std::string client;  ///< its name
  std::int64_t scene = 0;
  std::string session;  ///< an agent's, when it looks at one without a scene
  Taille taille;
};

struct Releve {
  std::map<std::int64_t, SceneMontree> scenes;
  std::map<std::string, Montrable> terminaux;  ///< by the board's id
  std::vector<Spectateur> spectateurs;
  std::string lien;  ///< the client that carries our commands
  bool regardee(std::int64_t scene) const;
};

/// The name that a scene's session is opened by.
std::string session(std::int64_t scene);

std::string relever();
/// `ecrits`: what each command of `relever` wrote.
Releve releve(const std::vector<std::string>& ecrits);

/// From here on, or no more, our client is told within a second that a pane of a scene has another size: tmux
/// has no other word of it for us. Lasts as long as that client.
std::string suivreTailles(bool suivre);

/// A scene with its list alone.
/// `dansSaSession`: that one stands, and its window is gone.
std::string ouvrirScene(std::int64_t scene, const std::vector<std::string>& motsListe, bool dansSaSession);
/// The list again, in a window that has lost it.
std::string ouvrirListe(const SceneMontree& scene, const std::vector<std::string>& motsListe);
/// A view of an agent's terminal, for a scene's window. The keyboard stays where it was.
std::string ouvrirVue(const SceneMontree& scene, const std::string& cle, const Montrable& montrable,
                      const std::vector<std::string>& mots);
std::string fermerVolet(const std::string& volet);
/// The panes in that order, by swaps; empty when they are.
std::string ordonner(const SceneMontree& scene, const std::vector<std::string>& ordre);
std::string disposer(const SceneMontree& scene, const std::string& disposition);
/// Here and below, `session` is a target.
std::string retenirPlan(const std::string& session, const std::string& plan);
std::string choisir(const std::string& volet);
std::string titrer(const std::string& volet, const std::string& titre);
/// What the scenes show in the door's stead once it has closed; tmux does so by itself when it was killed.
std::string fermerPorte();
std::string ecrireLigne(const std::string& session, const std::string& ligne);
std::string mener(const std::string& client, const std::string& session);
std::string redimensionner(const std::string& terminal, Taille taille);
/// A message on those clients, whatever its text holds.
std::string annoncer(const std::vector<std::string>& clients, const std::string& texte);

}  // namespace tarnavelle::Plateau::CommandesVues
