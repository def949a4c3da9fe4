// What the registry holds, one record a kind. Plain values. Instants are milliseconds since 1970, UTC; a text
// that is absent is empty; an id is the board's own (never reused), a `numero` is the registry's (from 1, never
// reused).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/Date.hpp"

namespace tarnavelle::Plateau {

/// The last instruction given to an agent; its text is not kept.
struct FicheConsigne {
  std::string empreinte{};  ///< `empreinteTexte` of the whole
  std::string extrait{};    ///< its beginning
  Date::Instant quand{};
  bool operator==(const FicheConsigne&) const = default;
};

/// An agent, from its opening until it is forgotten, its process's death and the machine's reboots included.
struct FicheAgent {
  std::string id{};
  std::string nom{};
  std::vector<std::string> etiquettes{};  ///< further names, given by nommer_zone
  std::string programme{};                ///< its id in the catalogue
  std::string dossier{};
  std::string hote{};  ///< empty for this machine
  std::int64_t scene = 0;
  bool ouvert = true;  ///< has its window on the scene; without it the agent goes on
  std::string noeud{};
  std::vector<std::string> mots{};  ///< what started it: no NUL, and no secret, which is the caller's duty
  std::string conversation{};
  std::string session{};
  std::string terminal{};
  Date::Instant ouverture{};
  std::string etat{};
  Date::Instant depuis{};
  bool termine = false;  ///< its program has ended, or was not found again
  FicheConsigne consigne{};
  bool entamee = false;  ///< something was said in its conversation
  bool operator==(const FicheAgent&) const = default;

  /// What a conversation with Hermès has for its programme. It runs here; its `conversation` is Hermès's host,
  /// empty when he is reached without one.
  static constexpr std::string_view conversationHermes = "conversation";
  bool estConversation() const { return programme == conversationHermes; }
};

/// A window that is no agent's: the terminal of shell or of script.
struct FicheFenetre {
  std::string id{};
  std::string nom{};
  std::vector<std::string> etiquettes{};
  std::string commande{};
  std::string dossier{};
  std::int64_t scene = 0;
  std::string session{};
  std::string terminal{};
  Date::Instant ouverture{};
  bool termine = false;
  std::optional<int> statut{};  ///< its exit status, once ended and where it is known
  bool operator==(const FicheFenetre&) const = default;
};

struct FicheScene {
  std::int64_t numero = 0;  ///< also their order
  std::string nom{};
  std::string dossier{};
  std::string auRegard{};  ///< id of the agent or window in view
  bool visible = false;    ///< one of them is, as soon as there is one
  bool operator==(const FicheScene&) const = default;
};

struct FicheNote {
  std::int64_t numero = 0;
  std::string texte{};
  std::optional<std::int64_t> scene{};  ///< nothing for a global one
  std::string auteur{};
  Date::Instant quand{};
  bool operator==(const FicheNote&) const = default;
};

struct FichePostIt {
  std::int64_t numero = 0;
  std::string texte{};
  std::int64_t scene = 0;
  Date::Instant quand{};
  bool operator==(const FichePostIt&) const = default;
};

struct FicheTache {
  enum class Etat { enCours, done, unknown };
  std::int64_t numero = 0;
  std::string agent{};     ///< id
  std::string nomAgent{};  ///< as it was then: the agent may be forgotten
  std::string prompt{};
  std::string verify{};
  int exemplaire = 1;  ///< which of `nombre`, from 1
  int nombre = 1;
  Etat etat = Etat::enCours;
  std::string note{};                        ///< what the agent reported
  std::optional<Date::Instant> rapportee{};  ///< reported, so to be verified while it is en cours
  std::string sortie{};                      ///< the end of verify's output
  Date::Instant pondue{};
  std::optional<Date::Instant> close{};
  std::string issue{};  ///< how verify ended, in French; empty when it did not run
  bool operator==(const FicheTache&) const = default;
};

/// Kept until it was given.
struct FicheMessage {
  enum class Etat {
    attend,
    pris,     ///< being typed at this moment
    douteux,  ///< the board died in between, or saw no proof: perhaps typed
    perdu,    ///< its addressee was forgotten first
  };
  std::int64_t numero = 0;
  std::string expediteur{};       ///< a name, as it was then
  std::string destinataire{};     ///< id
  std::string nomDestinataire{};  ///< as it was then
  std::string texte{};
  Date::Instant quand{};
  Etat etat = Etat::attend;
  bool operator==(const FicheMessage&) const = default;
};

/// "When that agent …, tell that other one": once.
struct FicheRelais {
  std::int64_t numero = 0;
  std::string agent{};         ///< id of the one awaited
  std::string evenement{};     ///< "fini" or "besoin"
  std::string destinataire{};  ///< id
  std::string texte{};
  Date::Instant quand{};
  bool operator==(const FicheRelais&) const = default;
};

/// What Hermès published to the operator.
struct FicheAvis {
  std::int64_t numero = 0;
  std::string titre{};
  std::string texte{};
  Date::Instant quand{};  ///< as its server dated it
  bool lu = false;
  bool operator==(const FicheAvis&) const = default;
};

/// One verb carried out: never what was said in it.
struct FicheJournal {
  std::int64_t numero = 0;
  Date::Instant quand{};
  std::string qui{};
  std::string verbe{};
  std::string cible{};
  std::string issue{};
  bool operator==(const FicheJournal&) const = default;
};

}  // namespace tarnavelle::Plateau
