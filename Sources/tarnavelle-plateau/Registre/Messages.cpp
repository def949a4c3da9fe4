#include "Messages.hpp"

#include "BaseSQLite.hpp"
#include "Registre/Registre.hpp"

namespace tarnavelle::Plateau {
namespace {

using Etat = FicheMessage::Etat;

constexpr std::string_view ceMessage = "Ce message";

FicheMessage messageLu(Ligne& l) {
  return {.numero = l.entier(),
          .expediteur = l.texte(),
          .destinataire = l.texte(),
          .nomDestinataire = l.texte(),
          .texte = l.texte(),
          .quand = l.instant(),
          .etat = l.cas(Etat::perdu)};
}

FicheRelais relaisLu(Ligne& l) {
  return {.numero = l.entier(),
          .agent = l.texte(),
          .evenement = l.texte(),
          .destinataire = l.texte(),
          .texte = l.texte(),
          .quand = l.instant()};
}

void oublierVieux(Seance& seance, Date::Instant maintenant) {
  seance.executer("DELETE FROM messages WHERE etat IN (?, ?) AND quand < ?", Etat::douteux, Etat::perdu,
                  maintenant - Registre::messageGarde);
}

void ajouter(Seance& seance, const FicheMessage& m) {
  oublierVieux(seance, m.quand);
  seance.executer(
      "DELETE FROM messages WHERE numero = (SELECT min(numero) FROM messages WHERE etat IN (?, ?)) "
      "AND (SELECT count(*) FROM messages) >= ?",
      Etat::douteux, Etat::perdu, Registre::fichesMax);
  seance.exigerPlace("SELECT count(*) FROM messages", Registre::fichesMax);
  seance.executer(
      "INSERT INTO messages(expediteur, destinataire, nom_destinataire, texte, quand, etat) VALUES (?, ?, ?, "
      "?, ?, ?)",
      m.expediteur, m.destinataire, m.nomDestinataire, m.texte, m.quand, m.etat);
}

/// A message goes from one state to another; one that is not in the first is none.
Garde<Fait> passer(BaseSQLite& base, std::int64_t numero, Etat de, Etat a) {
  Ecriture ecriture(base);
  ecriture.executer("UPDATE messages SET etat = ? WHERE numero = ? AND etat = ?", a, numero, de);
  ecriture.exigerChange(ceMessage);
  return ecriture.conclure(Fait{});
}

std::string nomDe(Seance& seance, std::string_view id) {
  return seance
      .ligne([](Ligne& l) { return l.texte(); }, "SELECT texte FROM noms WHERE porteur = ? AND rang = 0", id)
      .value_or("");
}

}  // namespace

void Messages::rompre(Seance& seance, std::string_view agent, Date::Instant quand) {
  const auto lus = seance.lignes(
      [](Ligne& l) {
        return std::pair{l.texte(), l.vrai()};
      },
      "SELECT destinataire, max(evenement = 'fini') FROM relais WHERE agent = ? "
      "GROUP BY destinataire ORDER BY min(numero) "
      "LIMIT max(0, ? - (SELECT count(*) FROM messages))",
      agent, Registre::fichesMax);
  const std::string nom = nomDe(seance, agent);
  for (const auto& [destinataire, finAttendue] : lus)
    ajouter(seance, {.expediteur = nom,
                     .destinataire = destinataire,
                     .nomDestinataire = nomDe(seance, destinataire),
                     .texte = nom + " est sorti" + (finAttendue ? " sans avoir fini." : "."),
                     .quand = quand});
  seance.executer("DELETE FROM relais WHERE agent = ?", agent);
}

Garde<std::int64_t> Registre::souffler(const FicheMessage& message) {
  Ecriture ecriture(*base_);
  ajouter(ecriture, message);
  return ecriture.conclure(ecriture.dernierNumero());
}

Garde<Fait> Registre::oublierMessages(Date::Instant maintenant) {
  Ecriture ecriture(*base_);
  oublierVieux(ecriture, maintenant);
  return ecriture.conclure(Fait{});
}

Garde<std::optional<FicheMessage>> Registre::prendreMessage(std::string_view destinataire) {
  Ecriture ecriture(*base_);
  auto pris =
      ecriture.ligne(messageLu,
                     "UPDATE messages SET etat = ?1 WHERE numero = "
                     "(SELECT min(numero) FROM messages WHERE destinataire = ?2 AND etat = ?3) AND NOT EXISTS "
                     "(SELECT 1 FROM messages WHERE destinataire = ?2 AND etat = ?1) "
                     "RETURNING numero, expediteur, destinataire, nom_destinataire, texte, quand, etat",
                     Etat::pris, destinataire, Etat::attend);
  return ecriture.conclure(std::move(pris));
}

Garde<Fait> Registre::rendreMessage(std::int64_t numero) {
  return passer(*base_, numero, Etat::pris, Etat::attend);
}

Garde<Fait> Registre::douterMessage(std::int64_t numero) {
  return passer(*base_, numero, Etat::pris, Etat::douteux);
}

Garde<Fait> Registre::retirerMessage(std::int64_t numero) {
  Ecriture ecriture(*base_);
  ecriture.executer("DELETE FROM messages WHERE numero = ?", numero);
  ecriture.exigerChange(ceMessage);
  return ecriture.conclure(Fait{});
}

Garde<std::vector<FicheMessage>> Registre::messages() const {
  Seance seance(*base_);
  return seance.conclure(seance.lignes(
      messageLu,
      "SELECT numero, expediteur, destinataire, nom_destinataire, texte, quand, etat FROM messages "
      "ORDER BY numero"));
}

Garde<std::map<std::string, std::size_t>> Registre::courrier() const {
  Seance seance(*base_);
  const auto compte = [](Ligne& l) { return std::pair{l.texte(), static_cast<std::size_t>(l.entier())}; };
  const auto lus = seance.lignes(compte, "SELECT destinataire, count(*) FROM messages GROUP BY destinataire");
  return seance.conclure(std::map<std::string, std::size_t>(lus.begin(), lus.end()));
}

Garde<std::vector<std::string>> Registre::destinataires() const {
  Seance seance(*base_);
  return seance.conclure(seance.lignes(
      [](Ligne& l) { return l.texte(); },
      "SELECT destinataire FROM messages WHERE etat = ? GROUP BY destinataire ORDER BY min(numero)",
      Etat::attend));
}

Garde<std::int64_t> Registre::armer(const FicheRelais& r) {
  Ecriture ecriture(*base_);
  ecriture.exigerPlace("SELECT count(*) FROM relais", fichesMax);
  ecriture.executer("INSERT INTO relais(agent, evenement, destinataire, texte, quand) VALUES (?, ?, ?, ?, ?)",
                    r.agent, r.evenement, r.destinataire, r.texte, r.quand);
  return ecriture.conclure(ecriture.dernierNumero());
}

Garde<std::vector<FicheRelais>> Registre::declencher(std::string_view agent, std::string_view evenement,
                                                     Date::Instant quand) {
  Ecriture ecriture(*base_);
  auto declenches = ecriture.lignes(relaisLu,
                                    "SELECT numero, agent, evenement, destinataire, texte, quand FROM relais "
                                    "WHERE agent = ? AND evenement = ? ORDER BY numero",
                                    agent, evenement);
  for (const FicheRelais& r : declenches) {
    ajouter(ecriture, {.expediteur = nomDe(ecriture, agent),
                       .destinataire = r.destinataire,
                       .nomDestinataire = nomDe(ecriture, r.destinataire),
                       .texte = r.texte,
                       .quand = quand});
    ecriture.executer("DELETE FROM relais WHERE numero = ?", r.numero);
  }
  return ecriture.conclure(std::move(declenches));
}

Garde<Fait> Registre::rompreRelais(std::string_view agent, Date::Instant quand) {
  Ecriture ecriture(*base_);
  Messages::rompre(ecriture, agent, quand);
  return ecriture.conclure(Fait{});
}

Garde<std::vector<FicheRelais>> Registre::relais() const {
  Seance seance(*base_);
  return seance.conclure(seance.lignes(
      relaisLu, "SELECT numero, agent, evenement, destinataire, texte, quand FROM relais ORDER BY numero"));
}

}  // namespace tarnavelle::Plateau
