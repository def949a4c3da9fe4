#include <array>

#include "Messages.hpp"
#include "Noms.hpp"
#include "Registre/Registre.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

using EtatTache = FicheTache::Etat;
using EtatMessage = FicheMessage::Etat;

constexpr std::string_view cetAgent = "Cet agent";

FicheConsigne consigne(Ligne& l) {
  return {.empreinte = l.texte(), .extrait = l.texte(), .quand = l.instant()};
}

/// Without its names.
FicheAgent agentLu(Ligne& l) {
  return {.id = l.texte(),
          .nom = {},
          .etiquettes = {},
          .programme = l.texte(),
          .dossier = l.texte(),
          .hote = l.texte(),
          .scene = l.entier(),
          .ouvert = l.vrai(),
          .noeud = l.texte(),
          .mots = l.mots(),
          .conversation = l.texte(),
          .session = l.texte(),
          .terminal = l.texte(),
          .ouverture = l.instant(),
          .etat = l.texte(),
          .depuis = l.instant(),
          .termine = l.vrai(),
          .consigne = consigne(l),
          .entamee = l.vrai()};
}

FicheFenetre fenetreLue(Ligne& l) {
  return {.id = l.texte(),
          .nom = {},
          .etiquettes = {},
          .commande = l.texte(),
          .dossier = l.texte(),
          .scene = l.entier(),
          .session = l.texte(),
          .terminal = l.texte(),
          .ouverture = l.instant(),
          .termine = l.vrai(),
          .statut = l.facultatif(&Ligne::petit)};
}

template <class Fiche>
std::vector<Fiche> nommees(Seance& seance, std::vector<Fiche> fiches) {
  auto noms = Noms::tous(seance);
  for (Fiche& fiche : fiches) {
    Noms::Portes& portes = noms[fiche.id];
    fiche.nom = std::move(portes.nom);
    fiche.etiquettes = std::move(portes.etiquettes);
  }
  return fiches;
}

void quitterLeRegard(Seance& seance, std::string_view id) {
  seance.executer("UPDATE scenes SET au_regard = '' WHERE au_regard = ?", id);
}

}  // namespace

Garde<Fait> Registre::garderAgent(const FicheAgent& a) {
  Ecriture ecriture(*base_);
  ecriture.executer("DELETE FROM agents WHERE id = ?", a.id);
  ecriture.exigerPlace("SELECT count(*) FROM agents", agentsMax);
  ecriture.executer("INSERT INTO agents VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)", a.id,
                    a.programme, a.dossier, a.hote, a.scene, a.ouvert, a.noeud, a.mots, a.conversation,
                    a.session, a.terminal, a.ouverture, a.etat, a.depuis, a.termine, a.consigne.empreinte,
                    a.consigne.extrait, a.consigne.quand, a.entamee);
  Noms::donner(ecriture, a.id, a.nom, a.etiquettes);
  return ecriture.conclure(Fait{});
}

Garde<Fait> Registre::noterEtat(std::string_view id, std::string_view etat, Date::Instant depuis) {
  Ecriture ecriture(*base_);
  ecriture.executer("UPDATE agents SET etat = ?, depuis = ? WHERE id = ?", etat, depuis, id);
  ecriture.exigerChange(cetAgent);
  return ecriture.conclure(Fait{});
}

Garde<Fait> Registre::noterConsigne(std::string_view id, std::string_view texte, Date::Instant quand) {
  Ecriture ecriture(*base_);
  ecriture.executer(
      "UPDATE agents SET consigne_empreinte = ?, consigne_extrait = ?, consigne_quand = ?, entamee = 1 "
      "WHERE id = ?",
      empreinteTexte(texte), Texte::premiers(texte, extraitMax), quand, id);
  ecriture.exigerChange(cetAgent);
  return ecriture.conclure(Fait{});
}

Garde<Fait> Registre::oublierAgent(std::string_view id, Date::Instant quand) {
  Ecriture ecriture(*base_);
  ecriture.executer("DELETE FROM agents WHERE id = ?", id);
  ecriture.exigerChange(cetAgent);
  Messages::rompre(ecriture, id, quand);
  Noms::liberer(ecriture, id);
  quitterLeRegard(ecriture, id);
  ecriture.executer("UPDATE taches SET etat = ?, close = ? WHERE agent = ? AND etat = ?", EtatTache::unknown,
                    quand, id, EtatTache::enCours);
  ecriture.executer("UPDATE messages SET etat = ? WHERE destinataire = ? AND etat = ?", EtatMessage::douteux,
                    id, EtatMessage::pris);
  ecriture.executer("UPDATE messages SET etat = ? WHERE destinataire = ? AND etat = ?", EtatMessage::perdu, id,
                    EtatMessage::attend);
  ecriture.executer("DELETE FROM relais WHERE destinataire = ?", id);
  return ecriture.conclure(Fait{});
}

Garde<std::optional<FicheAgent>> Registre::agent(std::string_view id) const {
  Seance seance(*base_);
  auto lus = nommees(seance, seance.lignes(agentLu, "SELECT * FROM agents WHERE id = ?", id));
  return seance.conclure(lus.empty() ? std::nullopt : std::optional(std::move(lus.front())));
}

Garde<std::vector<FicheAgent>> Registre::agents() const {
  Seance seance(*base_);
  return seance.conclure(
      nommees(seance, seance.lignes(agentLu, "SELECT * FROM agents ORDER BY ouverture, id")));
}

Garde<Fait> Registre::garderFenetre(const FicheFenetre& f) {
  Ecriture ecriture(*base_);
  ecriture.executer("DELETE FROM fenetres WHERE id = ?", f.id);
  ecriture.exigerPlace("SELECT count(*) FROM fenetres", agentsMax);
  ecriture.executer("INSERT INTO fenetres VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)", f.id, f.commande, f.dossier,
                    f.scene, f.session, f.terminal, f.ouverture, f.termine, f.statut);
  Noms::donner(ecriture, f.id, f.nom, f.etiquettes);
  return ecriture.conclure(Fait{});
}

Garde<Fait> Registre::oublierFenetre(std::string_view id) {
  Ecriture ecriture(*base_);
  ecriture.executer("DELETE FROM fenetres WHERE id = ?", id);
  ecriture.exigerChange("Cette fenêtre");
  Noms::liberer(ecriture, id);
  quitterLeRegard(ecriture, id);
  return ecriture.conclure(Fait{});
}

Garde<std::vector<FicheFenetre>> Registre::fenetres() const {
  Seance seance(*base_);
  return seance.conclure(
      nommees(seance, seance.lignes(fenetreLue, "SELECT * FROM fenetres ORDER BY ouverture, id")));
}

std::string empreinteTexte(std::string_view texte) {
  // http://www.isthe.com/chongo/tech/comp/fnv/: 64 bits, 1a
  std::uint64_t empreinte = 0xcbf29ce484222325;
  for (const char c : texte) empreinte = (empreinte ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  std::array<char, 16> chiffres{};
  for (auto chiffre = chiffres.rbegin(); chiffre != chiffres.rend(); ++chiffre, empreinte >>= 4)
    *chiffre = "0123456789abcdef"[empreinte & 0xf];
  return {chiffres.data(), chiffres.size()};
}

}  // namespace tarnavelle::Plateau
