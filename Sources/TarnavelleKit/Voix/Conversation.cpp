// The session under a conversation: how it is opened, what its losses lead to, how all ends.
#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "ConversationInterne.hpp"
#include "Socle/HorlogeContinue.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

constexpr std::string_view dejaUneReponse = "conversation_already_has_active_response";

/// What our own housekeeping may meet when the service has been quicker: nothing to trouble the operator with.
constexpr std::array<std::string_view, 4> sansConsequence{
    "response_cancel_not_active", "item_delete_invalid_item_id", "item_truncate_invalid_item_id",
    "input_audio_buffer_commit_empty"};

std::string secondesDites(std::chrono::seconds duree) { return std::to_string(duree.count()) + " s"; }

}  // namespace

ConversationVoix::Interne::Interne(Reglages reglages)
    : reglages_(std::move(reglages)), monde_(reglages_.monde) {
  Reglages& r = reglages_;
  if (!r.maintenant) r.maintenant = HorlogeContinue::maintenant;
  if (r.model.empty()) r.model = r.provider.modeleParDefaut;
  if (r.voice.empty()) r.voice = r.ton.voixSuggeree.value_or(r.provider.voixParDefaut);
  if (!r.cap && pousser()) r.cap = RealtimeClient::capSeconds;
}

void ConversationVoix::Interne::avertir(Message::Niveau niveau, std::string texte, std::string conseil) {
  dire(dehors().surMessage,
       Message{.niveau = niveau, .texte = std::move(texte), .conseil = std::move(conseil)});
}

void ConversationVoix::Interne::commencer() {
  if (enCours_) return;
  enCours_ = true;
  debut_ = maintenant();
  usage_ = {};
  octetsEntres_ = octetsSortis_ = 0;
  tentative_ = 1;
  dejaPrete_ = false;
  refus_.reset();
  vivant();
  publier();  // though it may be refused at once
  ouvrir();
}

void ConversationVoix::Interne::ouvrir() {
  reconnexionA_.reset();
  ++session_;
  const Reglages& r = reglages_;
  ContratVoix contrat = ContratVoix::tarnavelleConversation(monde_, r.ton, !pousser());
  if (!r.outils.empty()) contrat.outils = r.outils;
  mondeDit_ = monde_;
  ouverteAvant_ = maintenant() + patienceOuverture;
  auto ouverture = r.ouvrir({.provider = r.provider,
                             .voice = r.voice,
                             .contrat = std::move(contrat),
                             .handlers = handlers(),
                             .cap = r.cap,
                             .profil = r.profil,
                             .effort = r.ton.effort});
  if (ouverture)
    client_ = *std::move(ouverture);
  else
    abandonner("La voix ne peut pas s'ouvrir : " + std::move(ouverture).raison() + ".",
               "La clé du service se donne par " + r.provider.cleEnv + ".");
}

/// What the session brings, done in its turn, unless it is over by then.
template <class Recu>
auto ConversationVoix::Interne::recevoir(Recu recu) {
  return [faible = weak_from_this(), session = session_, recu](auto... recus) {
    if (const auto moi = faible.lock())
      moi->confier([session, recu, ... recus = std::move(recus)](Interne& i) mutable {
        if (i.session_ == session && i.client_) recu(i, std::move(recus)...);
      });
  };
}

RealtimeClient::Handlers ConversationVoix::Interne::handlers() {
  using I = Interne;
  return {
      .onReady = recevoir([](I& i) { i.surPret(); }),
      .onToolCall = recevoir([](I& i, FileAppelsRealtime::Appel appel) { i.surAppel(std::move(appel)); }),
      .onAudioDelta = recevoir([](I& i, const Octets& son) { i.surSon(son); }),
      .onDone = recevoir([](I& i) { i.surFini(); }),
      .onError = recevoir([](I& i, const std::string& texte) { i.surErreur(texte); }),
      .onUsage = recevoir([](I& i, const TourRealtime& tour) { i.surUsage(tour); }),
      .onItemCree = recevoir([](I& i, std::string id) {
        i.items_.push_back(std::move(id));
        if (i.items_.size() > itemsMax) i.items_.pop_front();
      }),
      .onFermeture = recevoir([](I& i, const std::optional<std::string>& raison) { i.surChute(raison); }),
      .onTranscriptionEntree = recevoir([](I& i, const std::string& texte) { i.surTranscription(texte); }),
      .onEcouteEntree = recevoir([](I& i, bool parle) { i.surEcoute(parle); }),
      .onRefus = recevoir([](I& i, const RefusRealtime& refus) { i.surRefus(refus); }),
      .onReponse = recevoir([](I& i) { i.surReponse(); }),
      .onSonDe = recevoir([](I& i, std::string item) { i.itemSon_ = std::move(item); }),
      .onParole = recevoir([](I& i, const std::string& texte) {
        if (!Texte::rogner(texte).empty()) i.dire(i.dehors().surModele, texte);
      }),
      .onPlafond = recevoir([](I& i) { i.surPlafond(); }),
  };
}

void ConversationVoix::Interne::surPret() {
  ouverteAvant_.reset();
  tentative_ = 1;
  refus_.reset();
  if (std::exchange(prete_, true)) return;  // a change of the session was accepted
  dejaPrete_ = true;
  for (const Octets& pcm : std::exchange(attenteSon_, {})) envoyerSon(pcm);
  if (std::exchange(tourFini_, false)) finirTour();
}

void ConversationVoix::Interne::surRefus(const RefusRealtime& refus) {
  refusDit_ = refus.http == 0 || !refus.message.empty();
  if (refus.code == dejaUneReponse) {  // ours is asked for again after that one
    demande_ = true;
    attendreReponse(patienceReponse);
  }
  if (refus.code == dejaUneReponse || std::ranges::find(sansConsequence, refus.code) != sansConsequence.end())
    return;
  const auto motif = ReconnexionRealtime::motif({}, refus);
  if (motif || !refus_ || !ReconnexionRealtime::motif({}, refus_)) refus_ = refus;
  if (!refus.message.empty()) avertir(Message::Niveau::detail, refus.message);
  if (motif && refus.http == 0) abandonner(std::string(ReconnexionRealtime::phrase(*motif)), conseil(*motif));
}

void ConversationVoix::Interne::surErreur(const std::string& texte) {
  if (std::exchange(refusDit_, false)) return;
  avertir(Message::Niveau::detail, texte);
  if (const auto motif = ReconnexionRealtime::motif(texte, {}))
    abandonner(std::string(ReconnexionRealtime::phrase(*motif)), conseil(*motif));
}

void ConversationVoix::Interne::surChute(const std::optional<std::string>& raison) {
  const auto refus = std::exchange(refus_, std::nullopt);
  perdre();
  const auto decision = ReconnexionRealtime::decision({.superviseurEnCours = reconnexionA_.has_value(),
                                                       .message = raison,
                                                       .tentative = tentative_,
                                                       .refus = refus});
  std::visit(Selon{[&](const ReconnexionRealtime::Decision::abandonner& fin) {
                     const auto motif = ReconnexionRealtime::motif(raison, refus);
                     abandonner(fin.message, motif ? conseil(*motif) : "");
                   },
                   [&](const ReconnexionRealtime::Decision::reconnecter& encore) {
                     reconnexionA_ = maintenant() + encore.delai;
                     tentative_ = encore.tentative + 1;
                     const bool perdue = std::exchange(dejaPrete_, false);
                     const int http = refus ? refus->http : 0;
                     const auto [quoi, conseil] =
                         perdue     ? std::pair("La connexion au service vocal est perdue", "")
                         : http > 0 ? std::pair("Le service vocal ne prend pas la connexion",
                                                "Il est peut-être en panne, ou trop demandé.")
                                    : std::pair("Le service vocal est injoignable",
                                                "Vérifiez que cette machine est reliée au réseau.");
                     avertir(Message::Niveau::avis,
                             quoi + (http > 0 ? " (HTTP " + std::to_string(http) + ")" : "") +
                                 " : nouvel essai dans " + secondesDites(encore.delai) + ".",
                             conseil);
                   },
                   [](const ReconnexionRealtime::Decision::rien&) {}},
             decision.cas);
}

void ConversationVoix::Interne::surPlafond() { terminer(Etat::sommeil); }

/// The session is no more; the conversation may go on in another one.
void ConversationVoix::Interne::perdre() {
  ++session_;
  if (const auto client = std::exchange(client_, nullptr)) client->close();
  prete_ = false;
  ouverteAvant_.reset();
  items_.clear();
  voix_.oublierItems();
  if (appels_.courant) orphelin_ = appels_.courant;
  appels_.vider();
  appelJusqua_.reset();
  if (livree_) annonces_.remettre(*std::exchange(livree_, std::nullopt));
  reponseJusqua_.reset();
  demande_ = ecartee_ = pourAnnonce_ = refusDit_ = false;
  octetsDuTour_ = 0;
  if (std::exchange(parle_, false)) dire(dehors().surParoleOperateur, false);
}

void ConversationVoix::Interne::abandonner(const std::string& phrase, std::string conseil) {
  avertir(Message::Niveau::panne, phrase, std::move(conseil));
  terminer(Etat::raccroche);
}

std::string ConversationVoix::Interne::conseil(ReconnexionRealtime::Motif motif) const {
  const RealtimeProvider& p = reglages_.provider;
  switch (motif) {
    case ReconnexionRealtime::Motif::credit:
      return "Rechargez le compte chez " + p.editeur + ", ou choisissez un autre service.";
    case ReconnexionRealtime::Motif::cle: return "Vérifiez la clé donnée par " + p.cleEnv + ".";
    case ReconnexionRealtime::Motif::session:
      return "Vérifiez le modèle demandé (" + reglages_.model + ") et les droits de la clé " + p.cleEnv + ".";
  }
  return {};
}

void ConversationVoix::Interne::terminer(Etat repos) {
  if (!std::exchange(enCours_, false)) return;
  repos_ = repos;
  dire(dehors().surSilence);
  voix_.couper(0, secondes());
  const auto appel = appels_.courant;
  perdre();
  orphelin_.reset();
  if (appel) dire(dehors().surAbandon, appel->callID);
  reconnexionA_.reset();
  adieuJusqua_.reset();
  annonces_.vider();
  attenteSon_.clear();
  enfonce_ = tourFini_ = false;
  dire(dehors().surFin, cout());
}

ConversationVoix::Cout ConversationVoix::Interne::cout() const {
  const double duree = std::chrono::duration<double>(maintenant() - debut_).count();
  constexpr double octetsParSeconde = 2.0 * RealtimeAudio::sampleRate;
  const double entrees = static_cast<double>(octetsEntres_) / octetsParSeconde;
  const double sorties = static_cast<double>(octetsSortis_) / octetsParSeconde;
  if (usage_.tours == 0)
    return {.usage = usage_,
            .dollars = RealtimeCost::estimate(entrees, sorties),
            .ligne = RealtimeCost::line(duree, entrees, sorties)};
  const TarifRealtime& tarif = TarifRealtime::pour(reglages_.model);
  return {.usage = usage_, .dollars = usage_.cout(tarif), .ligne = usage_.ligne(duree, tarif)};
}

}  // namespace tarnavelle
