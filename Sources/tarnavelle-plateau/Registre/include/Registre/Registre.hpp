// What a board remembers: agents, windows, scenes, notes, tasks, post-its, messages, relays, journal. One
// SQLite file that outlives the board, or one in memory. What names, states and verbs mean is others' business.
//
// Every change is whole or not at all, and on the file when the function returns: a board that is killed loses
// nothing that it was told was done. A power failure may take the last seconds with it, and leaves the file
// sound. Safe from any thread: one call at a time, each short. A failed call changed nothing.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Registre/Avarie.hpp"
#include "Registre/Fiches.hpp"
#include "Socle/Environnement.hpp"

namespace tarnavelle::Plateau {

class BaseSQLite;

class Registre {
 public:
  static constexpr std::int64_t agentsMax = 1000;  ///< agents, windows: each
  static constexpr std::int64_t scenesMax = 1000;
  static constexpr std::int64_t fichesMax = 1000;  ///< notes, post-its, tasks, messages, relays, notices: each
  static constexpr std::int64_t journalMax = 10000;  ///< the oldest lines go first
  static constexpr std::int64_t alertesMax = 4000;   ///< the same; more than there are agents and tasks
  static constexpr std::size_t texteMax = std::size_t{1} << 18;   ///< bytes of one text
  static constexpr std::size_t sortieMax = std::size_t{1} << 14;  ///< bytes kept of verify's output: its end
  static constexpr std::size_t extraitMax = 80;                   ///< characters kept of an instruction
  static constexpr std::size_t champMax = 200;  ///< characters of a journal's field, of a closed task's text
  static constexpr std::size_t avisMax = 4000;  ///< characters of a notice
  static constexpr std::int64_t entendusMax = 10000;  ///< ids of notices: the oldest go first
  static constexpr std::int64_t octetsMax = std::int64_t{1} << 28;

  static constexpr std::string_view nomUsuel = "plateau.db";
  /// "tarnavelle/plateau.db" in XDG_STATE_HOME (~/.local/state when it is unset or relative), or in macOS's
  /// Application Support folder.
  static std::filesystem::path cheminUsuel(const Variables& environnement);

  struct Ouverture {
    std::filesystem::path chemin;
    Date::Instant maintenant{};       ///< dates what is set aside
    std::int64_t taille = octetsMax;  ///< bytes that the file may grow to
  };
  /// Opens the file, made with its folder (0700) and for its owner alone (0600) where there is none, brought up
  /// to date where it is older. A damaged file, and one of a newer version or of another program, is set aside
  /// under a name that says so, and a new one begun: `avis` tells. The file is this process's own until the
  /// registry is destroyed (`occupe` names who has it).
  static Garde<Registre> ouvrir(const Ouverture& ouverture);
  static Garde<Registre> enMemoire();

  Registre(Registre&&) noexcept;
  Registre& operator=(Registre&&) noexcept;
  ~Registre();

  /// What the operator has to be told of the opening; empty as a rule.
  const std::string& avis() const { return avis_; }

  // Names: of agents, of windows, and their labels. They compare trimmed, without case or accents; one
  // designates one thing alone (else `pris`).
  /// The id of what bears that name or label, or has that tmux session; nothing for nothing.
  Garde<std::optional<std::string>> designe(std::string_view nom) const;
  Garde<Fait> etiqueter(std::string_view id, std::string_view etiquette);
  Garde<std::vector<std::string>> indicatifs() const;
  Garde<Fait> reglerIndicatifs(const std::vector<std::string>& noms);

  /// Adds the agent, or replaces all that was known under its id.
  Garde<Fait> garderAgent(const FicheAgent& agent);
  Garde<Fait> noterEtat(std::string_view id, std::string_view etat, Date::Instant depuis);
  Garde<Fait> noterConsigne(std::string_view id, std::string_view texte, Date::Instant quand);
  /// Frees its names; its tasks en cours become unknown, its messages lost, its relays go.
  Garde<Fait> oublierAgent(std::string_view id, Date::Instant quand);
  Garde<std::optional<FicheAgent>> agent(std::string_view id) const;
  Garde<std::vector<FicheAgent>> agents() const;  ///< in the order of their opening

  Garde<Fait> garderFenetre(const FicheFenetre& fenetre);
  Garde<Fait> oublierFenetre(std::string_view id);
  Garde<std::vector<FicheFenetre>> fenetres() const;  ///< in the order of their opening

  /// Gives its number; the first scene is the visible one.
  Garde<std::int64_t> ajouterScene(std::string_view nom, std::string_view dossier);
  Garde<Fait> montrerScene(std::int64_t numero);
  Garde<Fait> regarder(std::int64_t scene, std::string_view id);
  Garde<std::vector<FicheScene>> scenes() const;

  /// Here and below, a number that the caller puts into a new record counts for nothing.
  Garde<std::int64_t> noter(const FicheNote& note);
  struct Recherche {
    std::string_view requete;  ///< words, in any order and with any accents; never a query language
    std::int64_t scene = 0;    ///< its notes, and the global ones
    std::int64_t limite = 5;
  };
  /// Those that hold one of the words or a word that begins so, the most pertinent first (bm25); the latest
  /// ones for a query of white space alone; none for a query without any letter or number.
  Garde<std::vector<FicheNote>> rappeler(const Recherche& recherche) const;

  Garde<std::int64_t> coller(const FichePostIt& postit);
  Garde<Fait> decoller(std::int64_t numero);
  Garde<std::vector<FichePostIt>> postits() const;

  /// The oldest closed task makes room for it.
  Garde<std::int64_t> pondre(const FicheTache& tache);
  /// Opens it again if it was judged unknown; one that is done is none.
  Garde<Fait> rapporter(std::int64_t numero, std::string_view note, Date::Instant quand);
  struct Jugement {
    FicheTache::Etat etat = FicheTache::Etat::unknown;
    std::string_view sortie{};  ///< its end is kept
    std::string_view issue{};
  };
  /// Closes it.
  Garde<Fait> juger(std::int64_t numero, const Jugement& jugement, Date::Instant quand);
  Garde<std::vector<FicheTache>> taches() const;
  /// Those that are closed, for whoever tells of them: of their texts the beginning, of verify nothing.
  Garde<std::vector<FicheTache>> tachesCloses() const;
  /// Those that were reported and are still to be judged, the first of them first.
  Garde<std::vector<FicheTache>> tachesAJuger() const;

  // A message is typed once at most: taken, then typed, then given. One that was taken when the board died may
  // have been typed: it becomes doubtful, is listed, and is never taken again.
  // One that nobody will give any more goes after `messageGarde`, or when it takes another's place.
  static constexpr std::chrono::days messageGarde{7};
  Garde<std::int64_t> souffler(const FicheMessage& message);
  Garde<Fait> oublierMessages(Date::Instant maintenant);
  /// The oldest that waits for that agent, taken; nothing while another one of its is taken.
  Garde<std::optional<FicheMessage>> prendreMessage(std::string_view destinataire);
  /// Nothing of it was typed, for certain: it waits again, in its place.
  Garde<Fait> rendreMessage(std::int64_t numero);
  /// Typed, but nobody knows whether it arrived.
  Garde<Fait> douterMessage(std::int64_t numero);
  /// Given, or the operator has seen enough of it: no longer kept.
  Garde<Fait> retirerMessage(std::int64_t numero);
  Garde<std::vector<FicheMessage>> messages() const;
  /// How many there are, by their addressee's id.
  Garde<std::map<std::string, std::size_t>> courrier() const;
  /// Ids of those for whom a message waits, the oldest message's first.
  Garde<std::vector<std::string>> destinataires() const;

  Garde<std::int64_t> armer(const FicheRelais& relais);
  /// The relays armed on it become messages (from that agent's name) and are gone; gives those.
  Garde<std::vector<FicheRelais>> declencher(std::string_view agent, std::string_view evenement,
                                             Date::Instant quand);
  /// That agent has ended: whoever was to be told of something else is told so, and its relays are gone.
  Garde<Fait> rompreRelais(std::string_view agent, Date::Instant quand);
  Garde<std::vector<FicheRelais>> relais() const;

  /// Notes that the operator is alerted of that; false when he was already.
  Garde<bool> alerter(std::string_view sujet);
  /// It is over: the next time he is to be alerted again.
  Garde<Fait> apaiser(std::string_view sujet);
  Garde<std::vector<std::string>> alertes() const;

  // Notices. One is kept, its id remembered and the last sign of its channel moved on in one step: a board that
  // is killed has heard it or has not. `canal` names server and topic without telling them.
  struct Entendu {
    std::string_view id;
    FicheAvis avis;
    std::string_view canal;
    std::optional<Date::Instant> jusque;  ///< every notice before then has come; nothing: as before
    bool aMontrer = true;                 ///< else its id alone is remembered
  };
  /// False when it was heard before; the oldest read one makes room for it, or the oldest.
  Garde<bool> entendre(const Entendu& entendu);
  Garde<Fait> noterEcoute(std::string_view canal, Date::Instant jusque);
  struct Ecoute {
    std::optional<Date::Instant> jusque;  ///< nothing: that channel was never heard
    std::vector<std::string> ids;         ///< oldest first
  };
  Garde<Ecoute> ecoute(std::string_view canal) const;
  Garde<std::vector<FicheAvis>> avisRecus() const;  ///< the oldest first
  /// The operator has seen that one and those before it; how many were new to him.
  Garde<std::int64_t> lireAvis(std::int64_t jusquAu);

  Garde<Fait> inscrire(const FicheJournal& ligne);
  Garde<std::vector<FicheJournal>> journal(std::int64_t limite) const;  ///< the latest first

 private:
  explicit Registre(std::unique_ptr<BaseSQLite> base);

  std::unique_ptr<BaseSQLite> base_;
  std::string avis_;
};

/// A stable fingerprint of a text (FNV-1a, 64 bits, in hexadecimal): tells texts apart, keeps no secret.
std::string empreinteTexte(std::string_view texte);

}  // namespace tarnavelle::Plateau
