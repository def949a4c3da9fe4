#include "Voix/ConversationVoix.hpp"

#include <utility>

#include "ConversationInterne.hpp"

namespace tarnavelle {

ConversationVoix::ConversationVoix(Reglages reglages)
    : interne_(std::make_shared<Interne>(std::move(reglages))) {}

ConversationVoix::~ConversationVoix() {
  interne_->taire();
  raccrocher();
}

void ConversationVoix::commencer() {
  interne_->confier([](Interne& i) { i.commencer(); });
}

void ConversationVoix::raccrocher() {
  interne_->confier([](Interne& i) { i.raccrocher(); });
}

void ConversationVoix::entendre(Octets pcm) {
  interne_->confier([pcm = std::move(pcm)](Interne& i) { i.entendre(pcm); });
}

void ConversationVoix::appuyer() {
  interne_->confier([](Interne& i) { i.appuyer(); });
}

void ConversationVoix::relacher() {
  interne_->confier([](Interne& i) { i.relacher(); });
}

void ConversationVoix::interrompre() {
  interne_->confier([](Interne& i) { i.interrompre(); });
}

void ConversationVoix::changerProfil(const ProfilEcouteVoix& profil) {
  interne_->confier([profil](Interne& i) { i.changerProfil(profil); });
}

void ConversationVoix::rendre(std::string callID, std::string sortie) {
  interne_->confier([callID = std::move(callID), sortie = std::move(sortie)](Interne& i) mutable {
    i.rendre(callID, std::move(sortie));
  });
}

void ConversationVoix::monde(MondeVoix monde) {
  interne_->confier([monde = std::move(monde)](Interne& i) mutable { i.monde(std::move(monde)); });
}

void ConversationVoix::annoncer(std::string annonce) {
  interne_->confier([annonce = std::move(annonce)](Interne& i) { i.annoncer(annonce); });
}

void ConversationVoix::activite(Activite activite) {
  interne_->confier([activite = std::move(activite)](Interne& i) { i.activite(activite); });
}

void ConversationVoix::feuVert(bool attendu) {
  interne_->confier([attendu](Interne& i) { i.feuVert(attendu); });
}

}  // namespace tarnavelle
