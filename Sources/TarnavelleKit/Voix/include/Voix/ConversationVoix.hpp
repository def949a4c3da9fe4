// A spoken conversation from beginning to end, over as many sessions with the service as it takes: what every
// embedder of the voice would write. Holds one RealtimeClient at a time; keeps the tool calls in order and
// answers each once, begins again after a drop, gives way to the operator, tells him what happens on the board
// when the conversation is free, gives the model the board as it has become, ends at a sleep phrase or when
// nobody speaks, and counts what it costs. Sound devices, the door and the day's record are its embedder's.
//
// Every function may be called from any thread, from inside an event too. Events come one at a time, on
// whichever thread brought what they tell (the caller's, the network's, a timer's): they must be brief, and
// never wait for another function of this conversation. None begins once the conversation is destroyed; one
// that runs meanwhile is not waited for: what events capture, they keep alive.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Socle/Octets.hpp"
#include "Socle/Resultat.hpp"
#include "Voix/AnnonceVoix.hpp"
#include "Voix/MondeVoix.hpp"
#include "Voix/ProfilEcouteVoix.hpp"
#include "Voix/RealtimeClient.hpp"
#include "Voix/ReconnexionRealtime.hpp"
#include "Voix/TonVoix.hpp"
#include "Voix/UsageRealtime.hpp"

namespace tarnavelle {

class ConversationVoix {
 public:
  enum class Etat {
    connexion,  ///< not ready to hear: connecting, or waiting to try again
    ecoute,
    parole,     ///< the model's voice is heard
    outil,      ///< a tool is at work
    sommeil,    ///< at rest after a sleep phrase or at the cap: `appuyer` or `commencer` wakes it
    raccroche,  ///< over: not begun, hung up, left by everybody, or refused
  };

  /// Something to tell the operator, in French.
  struct Message {
    enum class Niveau {
      detail,  ///< what the service or the network said, in its own words
      avis,    ///< what happens now
      panne,   ///< why the voice stops
    };
    Niveau niveau = Niveau::avis;
    std::string texte{};
    std::string conseil{};  ///< what to do about it; may be empty
    bool operator==(const Message&) const = default;
  };

  /// What the conversation has consumed so far.
  struct Cout {
    UsageRealtime usage{};
    double dollars = 0;  ///< from the lengths of sound when the service has counted nothing
    std::string ligne{};
    bool operator==(const Cout&) const = default;
  };

  /// Each may be left empty.
  struct Evenements {
    std::function<void(Etat)> surEtat{};  ///< each change
    /// The model's voice, 24 kHz PCM16, to be played after what was given before. A whole answer comes at once:
    /// minutes of sound.
    std::function<void(Octets)> surSon{};
    /// Silence, at once: drop what has not been heard. Returns how many 24 kHz samples of what was given since
    /// the last silence will never be heard; nothing when it isn't known, and the clock tells.
    std::function<std::optional<std::int64_t>()> surSilence{};
    std::function<void(std::string)> surOperateur{};  ///< what the operator has said, whole
    std::function<void(std::string)> surModele{};     ///< what the model has said, whole
    std::function<void(bool)> surParoleOperateur{};   ///< he is heard to begin, to stop
    /// A tool to be carried out, elsewhere than on this thread; then `rendre`, once. One at a time.
    std::function<void(FileAppelsRealtime::Appel)> surAppel{};
    /// That call isn't waited for any more: what it returns is dropped, or told once if the connection was
    /// lost.
    std::function<void(std::string callID)> surAbandon{};
    std::function<void(Cout)> surCout{};  ///< after each response that was counted
    std::function<void(Message)> surMessage{};
    /// The conversation is over (asleep or hung up), once, with what it cost: the day's record takes it.
    /// Nothing was consumed when neither a response nor a dollar is counted.
    std::function<void(Cout)> surFin{};
  };

  using Ouverture = Resultat<std::shared_ptr<RealtimeClient>, std::string>;
  using Horloge = std::function<std::chrono::nanoseconds()>;

  struct Reglages {
    RealtimeProvider provider{};
    std::string model{};  ///< whose price counts; empty: the provider's own
    std::string voice{};  ///< empty: the tone's, else the provider's own
    TonVoix ton{};
    std::optional<ProfilEcouteVoix> profil{};  ///< hands-free; absent: push-to-talk
    MondeVoix monde{};                         ///< the board at the start
    std::vector<OutilVoix> outils{};           ///< empty: those of a conversation
    /// Longest session; absent: none hands-free, `RealtimeClient::capSeconds` in push-to-talk.
    std::optional<std::chrono::milliseconds> cap{};
    /// Opens a session, as `ouvrirRealtime` does, or says why none can be.
    std::function<Ouverture(RealtimeClient::Reglages)> ouvrir{};
    Minuterie minuterie = minuterieReelle;
    Horloge maintenant{};  ///< empty: HorlogeContinue
    Evenements evenements{};
  };

  /// Nothing begins yet.
  explicit ConversationVoix(Reglages reglages);
  /// Hangs up, without a word.
  ~ConversationVoix();
  ConversationVoix(const ConversationVoix&) = delete;
  ConversationVoix& operator=(const ConversationVoix&) = delete;

  /// Begins a conversation, or another one after rest. Without effect while one goes on.
  void commencer();
  void raccrocher();

  /// The operator's sound: 24 kHz PCM16, chunks of any length. Dropped while nobody listens: before the session
  /// is ready and, as the profile says, while the model's voice is heard. In push-to-talk, heard while the key
  /// is down; what is said before the session is ready waits for it.
  void entendre(Octets pcm);
  /// Push-to-talk: the operator begins, which interrupts and wakes the voice, and ends his turn.
  void appuyer();
  void relacher();
  /// The operator silences the voice by other means than his own.
  void interrompre();
  /// He has put a headset on, or taken it off. Hands-free only.
  void changerProfil(const ProfilEcouteVoix& profil);

  /// What a tool returned. Unknown and abandoned calls are dropped.
  void rendre(std::string callID, std::string sortie);

  /// The board as it is now: told to the model before it next speaks, when it has changed.
  void monde(MondeVoix monde);
  /// A note for the model to voice when the conversation is free: AnnonceVoix writes them.
  void annoncer(std::string annonce);
  /// An agent's state: the end of a long piece of work is announced.
  struct Activite {
    std::string agent{};
    bool travaille = false;
    std::string resume{};  ///< what came out of it; may be empty
  };
  void activite(Activite activite);
  /// An action awaits the operator's word: notes wait meanwhile.
  void feuVert(bool attendu);

  static constexpr std::chrono::seconds patienceOuverture{90};  ///< for a session to be ready
  static constexpr std::chrono::seconds patienceOutil{180};     ///< a tool that returns nothing is given up
  /// A response that does not begin, or that nothing more is heard of, counts as over.
  static constexpr std::chrono::seconds patienceDebut{10};
  static constexpr std::chrono::seconds patienceReponse{60};
  static constexpr std::chrono::seconds patienceAnnulation{2};  ///< the same of one that was cut short
  static constexpr std::chrono::seconds patienceAdieu{20};      ///< for the voice to say its last words
  static constexpr std::chrono::seconds attenteSonMax{
      30};  ///< of push-to-talk sound said before the session is ready
  static constexpr std::chrono::milliseconds tourMin{100};  ///< less sound than that is no turn
  static constexpr std::size_t itemsMax = 4096;             ///< items remembered to be deleted

 private:
  class Interne;

  const std::shared_ptr<Interne> interne_;
};

}  // namespace tarnavelle
