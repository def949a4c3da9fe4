// A conversation over false sessions, a false clock and a false timer: what it sent, and what its events told,
// in order.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "Socle/Base64.hpp"
#include "Socle/LectureJSON.hpp"
#include "Voix/ConversationVoix.hpp"
#include "Voix/HandlersNotes.hpp"

namespace tarnavelle::essai {

/// An event that was sent, in a few words.
inline std::string enBref(const std::string& texte) {
  const Json e = *LectureJSON::objet(texte);
  const std::string type = Champ::texte(e, "type");
  if (type == "input_audio_buffer.append")
    return "son " + std::to_string(Base64::decoder(Champ::texte(e, "audio"))->size());
  if (type == "conversation.item.delete") return "oublie " + Champ::texte(e, "item_id");
  if (type == "conversation.item.truncate")
    return "tronque " + Champ::texte(e, "item_id") + " " + std::to_string(Champ::entier(e, "audio_end_ms", -1));
  if (type == "session.update") {
    const Json& s = *Champ::membre(e, "session");
    if (Champ::membre(s, "tools")) return "session";
    const std::string instructions = Champ::texte(s, "instructions");
    return instructions.empty() ? "écoute" : "monde " + instructions.substr(instructions.rfind(". ") + 2);
  }
  if (type != "conversation.item.create") return type;
  const Json& item = *Champ::membre(e, "item");
  if (Champ::texte(item, "type") == "function_call_output")
    return "rend " + Champ::texte(item, "call_id") + " " + Champ::texte(item, "output");
  return "note " + Champ::texte(Champ::membre(item, "content")->at(0), "text");
}

struct MondeConversation {
  using Instant = std::chrono::nanoseconds;

  explicit MondeConversation(std::optional<ProfilEcouteVoix> profil = ProfilEcouteVoix::casque()) {
    ConversationVoix::Reglages r{.provider = RealtimeProvider::openai(), .profil = std::move(profil)};
    r.ouvrir = [this](RealtimeClient::Reglages client) -> ConversationVoix::Ouverture {
      if (!refusDOuvrir.empty()) return Sinon{refusDOuvrir};
      transports.push_back(std::make_shared<TransportFactice>());
      return RealtimeClient::creer(transports.back(), std::move(client), minuterie());
    };
    r.minuterie = minuterie();
    r.maintenant = [this] { return t; };
    r.evenements = {
        .surEtat =
            [this](auto etat) {
              static constexpr const char* noms[] = {"connexion", "écoute",  "parole",
                                                     "outil",     "sommeil", "raccroché"};
              dit.push_back(std::string("= ") + noms[static_cast<int>(etat)]);
            },
        .surSon = [this](const Octets& son) { dit.push_back("joue " + std::to_string(son.size())); },
        .surSilence =
            [this] {
              dit.push_back("silence");
              return perdus;
            },
        .surOperateur = [this](const std::string& texte) { dit.push_back("opérateur : " + texte); },
        .surModele = [this](const std::string& texte) { dit.push_back("modèle : " + texte); },
        .surAppel = [this](const auto& appel) { dit.push_back("appel " + appel.name + " " + appel.callID); },
        .surAbandon = [this](const std::string& id) { dit.push_back("abandon " + id); },
        .surMessage =
            [this](const auto& m) {
              static constexpr const char* niveaux[] = {"détail", "avis", "panne"};
              dit.push_back(niveaux[static_cast<int>(m.niveau)] + (" : " + m.texte) +
                            (m.conseil.empty() ? "" : " ") + m.conseil);
            },
        .surFin = [this](const auto& cout) { dit.push_back("fin " + cout.ligne); },
    };
    conversation.emplace(std::move(r));
  }

  Minuterie minuterie() {
    return [this](auto delai, auto action) {
      const auto cle = std::pair(t + delai, ++numero);
      echeances.emplace(cle, std::move(action));
      plusDEcheances = std::max(plusDEcheances, echeances.size());
      return [this, cle] { echeances.erase(cle); };
    };
  }

  void passer(Instant duree) {
    const Instant fin = t + duree;
    while (!echeances.empty() && echeances.begin()->first.first <= fin) {
      auto premiere = echeances.extract(echeances.begin());
      t = std::max(t, premiere.key().first);
      ++reveils;
      premiere.mapped()();
    }
    t = fin;
  }

  /// One step of a script: what the service says (in a word, or a frame), or what is done here.
  void unPas(const std::string& pas) {
    std::istringstream mots(pas);
    std::string verbe, a, b;
    mots >> verbe >> a;
    std::getline(mots >> std::ws, b);
    const std::string suite = pas.substr(std::min(verbe.size() + 1, pas.size()));
    static const std::map<std::string, std::string> trames = {
        {"accepte", R"({"type":"session.updated"})"},
        {"parle", R"({"type":"input_audio_buffer.speech_started"})"},
        {"tait", R"({"type":"input_audio_buffer.speech_stopped"})"},
        {"répond", R"({"type":"response.created"})"},
        {"finit", R"({"type":"response.done"})"},
        {"appel",
         R"({"type":"response.output_item.done","item":{"type":"function_call","name":"$a","call_id":"$b"}})"},
        {"item", R"({"type":"conversation.item.added","item":{"id":"$a"}})"},
        {"son",
         R"({"type":"response.output_audio.delta","item_id":"$a","delta":"$son"})"},  // of $b milliseconds
        {"dit", R"({"type":"conversation.item.input_audio_transcription.completed","transcript":"$suite"})"}};
    ConversationVoix& c = *conversation;
    if (verbe == "commence") return c.commencer();
    if (verbe == "appuie") return c.appuyer();
    if (verbe == "relâche") return c.relacher();
    if (verbe == "micro") return c.entendre(Octets(nombre(a)));
    if (verbe == "rend") return c.rendre(a, b);
    if (verbe == "note") return c.annoncer(suite);
    if (verbe == "plateau") return c.monde({suite, {}});
    if (verbe == "attend") return passer(std::chrono::milliseconds(nombre(a)));
    if (verbe == "chute") return transports.back()->rappels.surChute("coupée");
    if (verbe == "prête") return unPas(R"({"type":"session.created"})"), unPas("accepte");
    const auto connue = trames.find(verbe);
    std::string trame = connue == trames.end() ? pas : connue->second;
    const std::pair<const char*, std::string> places[] = {
        {"$a", a}, {"$b", b}, {"$suite", suite}, {"$son", Base64::coder(Octets(48 * nombre(b)))}};
    for (const auto& [place, valeur] : places)
      if (const auto ou = trame.find(place); ou != trame.npos) trame.replace(ou, std::strlen(place), valeur);
    transports.back()->rappels.surTexte(trame);
  }
  static std::size_t nombre(const std::string& ecrit) { return std::strtoul(ecrit.c_str(), nullptr, 10); }

  /// What the script made it tell and send, as `rendu` gives it.
  Lignes faire(std::initializer_list<const char*> script) {
    for (const char* pas : script) unPas(pas);
    return rendu();
  }

  /// What was told since, and what was sent, which is marked "> ".
  Lignes rendu() {
    Lignes tout = std::exchange(dit, {});
    if (!transports.empty())
      for (const std::string& texte : std::exchange(transports.back()->envoyes, {}))
        tout.push_back("> " + enBref(texte));
    return tout;
  }

  Instant t{};
  std::map<std::pair<Instant, int>, std::function<void()>> echeances;
  int numero = 0;
  int reveils = 0;
  std::size_t plusDEcheances = 0;
  std::string refusDOuvrir;
  std::optional<std::int64_t> perdus;  ///< what the player says it dropped
  std::vector<std::shared_ptr<TransportFactice>> transports;
  Lignes dit;
  std::optional<ConversationVoix> conversation;
};

}  // namespace tarnavelle::essai
